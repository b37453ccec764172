#include "offline/Pictures.h"

#include "nowplaying/AutoGenreController.h"
#include "offline/OfflinePanel.h"
#include "ui/SettingsWindow.h"

#include <QDir>
#include <QLinearGradient>
#include <QPainter>
#include <QQuickView>

#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

namespace halvo {

namespace {

struct Stage {
    OfflineMachine machine;
    OfflinePanel panel{machine};

    Stage() {
        machine.playTrack("Northern Lights", "The Fjord Quartet");
        machine.moveSpectrum(2.5);
        machine.delegate().presetManager().preamp.set(-3.5F);
    }
    void dark() { panel.content().setSystemAppearance({.dark = true, .accent = std::nullopt}); }
    void accent(const char* hex) { machine.delegate().appSettings().setAccentColorHex(hex); }
    void open(const char* name) {
        if (auto* control = panel.named(QString::fromUtf8(name))) panel.click(control);
        panel.settle();
    }
    void bands() { open("Show EQ"); }
    void settings() { open("Settings"); }
    void custom(const char* name) {
        auto& presets = machine.delegate().presetManager();
        const auto made = presets.createCustomPreset(name);
        presets.movePreset(presets.presets.get().size() - 1, 2);
        (void)made;
        panel.settle(300); // until the pills have moved
    }
};

struct Scene {
    const char* name;
    std::function<void(Stage&)> arrange;
};

void fullPanel(Stage& stage) {
    stage.custom("Late night");
    stage.bands();
    stage.settings();
}

void dragPreset(Stage& stage) {
    fullPanel(stage);
    auto& panel = stage.panel;
    const auto start = OfflinePanel::middle(panel.find(QStringLiteral("PresetPill"), 0));
    panel.press(start);
    for (int step = 1; step <= 14; ++step)
        panel.move(start + QPointF(10 * step, 2));
}

void scrollPresets(Stage& stage) {
    auto& presets = stage.machine.delegate().presetManager();
    for (int index = 0; index < 12; ++index)
        (void)presets.createCustomPreset("Custom " + std::to_string(index + 1));
    presets.activate(presets.presets.get()[25]);
    stage.panel.settle();
    if (auto* pill = stage.panel.find(QStringLiteral("PresetPill"), 25)) {
        pill->forceActiveFocus(Qt::TabFocusReason);
    }
}

const std::vector<Scene>& scenes() {
    static const std::vector<Scene> all = {
        {"light", [](Stage& stage) { stage.custom("Late night"); }},
        {"dark",
         [](Stage& stage) {
             stage.dark();
             stage.bands();
         }},
        {"advanced", [](Stage& stage) { stage.bands(); }},
        {"settings-open", [](Stage& stage) { fullPanel(stage); }},
        {"settings-dark",
         [](Stage& stage) {
             stage.dark();
             fullPanel(stage);
         }},
        {"accent-green",
         [](Stage& stage) {
             stage.accent("#34C759");
             fullPanel(stage);
         }},
        {"accent-white",
         [](Stage& stage) {
             stage.machine.delegate().appSettings().addCustomColor("#FFFFFF", "Custom");
             stage.machine.delegate().appSettings().addCustomColor("#7A5CFF", "Custom");
             stage.accent("#FFFFFF");
             fullPanel(stage);
         }},
        {"accent-purple-dark",
         [](Stage& stage) {
             stage.dark();
             stage.accent("#AF52DE");
             stage.bands();
         }},
        {"color-editor",
         [](Stage& stage) {
             stage.settings();
             stage.open("Add custom color");
             if (auto* plane = stage.panel.find(QStringLiteral("ColorPlane"))) {
                 stage.panel.press(plane->mapToScene({220, 20}));
                 stage.panel.release(plane->mapToScene({220, 20}));
             }
         }},
        {"color-editor-dark",
         [](Stage& stage) {
             stage.dark();
             for (int index = 0; index < 9; ++index)
                 stage.machine.delegate().appSettings().addCustomColor("#FFCC66", "Custom");
             stage.settings();
             stage.open("Add custom color");
         }},
        {"presets-scrolled", [](Stage& stage) { scrollPresets(stage); }},
        {"preset-drag", [](Stage& stage) { dragPreset(stage); }},
        {"preset-menu",
         [](Stage& stage) {
             stage.custom("Late night");
             stage.panel.settle();
             stage.panel.click(stage.panel.find(QStringLiteral("PresetPill"), 2), Qt::RightButton);
         }},
        {"preset-rename",
         [](Stage& stage) {
             stage.custom("Late night");
             stage.panel.settle();
             stage.panel.find(QStringLiteral("PresetPill"), 2)->forceActiveFocus();
             stage.panel.type(Qt::Key_F2);
         }},
        {"output-list", [](Stage& stage) { stage.open("Output"); }},
        {"long-title",
         [](Stage& stage) {
             stage.machine.playTrack(
                 "Symphonic Variations on a Theme That Nobody Could Remember, Movement IV",
                 "The Extraordinarily Long Named Chamber Orchestra of Northern Jutland");
             stage.custom("A preset whose name is far longer than any pill should ever be");
         }},
        {"not-playing",
         [](Stage& stage) {
             stage.machine.delegate().nowPlayingMonitor().currentTrack.set(std::nullopt);
         }},
        {"no-device",
         [](Stage& stage) {
             stage.machine.unplugOutputs();
             stage.machine.delegate().presetManager().activePresetID.set(std::nullopt);
             stage.bands();
         }},
        {"auto-genre",
         [](Stage& stage) {
             auto& controller = stage.machine.delegate().autoGenreController();
             controller.isEnabled.set(true);
             controller.isLookingUp.set(false);
             controller.currentGenre.set("Jazz");
         }},
        {"looking-up-dark",
         [](Stage& stage) {
             stage.dark();
             auto& controller = stage.machine.delegate().autoGenreController();
             stage.machine.delegate().appSettings().setTagNoticeRead(true);
             controller.isEnabled.set(true);
             controller.isLookingUp.set(true);
         }},
        {"right-to-left",
         [](Stage& stage) {
             stage.machine.playTrack("أضواء الشمال البعيدة جدا فوق المدينة القديمة النائمة",
                                     "רביעיית הפיורד");
             stage.custom("موسيقى هادئة");
             (void)stage.machine.fake().audioHardware.add("rtl", "مكبرات الصوت");
             stage.machine.advance(std::chrono::seconds(1));
             stage.machine.delegate().deviceManager().selectedDeviceID.set("rtl");
         }},
        {"band-drag",
         [](Stage& stage) {
             stage.bands();
             auto* band = stage.panel.find(QStringLiteral("BandSlider"), 4);
             stage.panel.press(band->mapToScene({13, 100}));
             stage.panel.move(band->mapToScene({13, 30}));
         }},
        {"keyboard",
         [](Stage& stage) {
             stage.bands();
             stage.panel.find(QStringLiteral("BandSlider"), 3)
                 ->forceActiveFocus(Qt::TabFocusReason);
             stage.panel.type(Qt::Key_Up);
         }},
    };
    return all;
}

bool save(const QImage& picture, const QString& file) {
    constexpr int kMargin = 16;
    const qreal ratio = picture.devicePixelRatio();
    const QSizeF size = picture.size() / ratio + QSizeF(2 * kMargin, 2 * kMargin);
    QImage desktop((size * ratio).toSize(), QImage::Format_RGB32);
    desktop.setDevicePixelRatio(ratio);
    QPainter painter(&desktop);
    QLinearGradient sky(0, 0, size.width() / 3, size.height());
    sky.setColorAt(0, QColor(0x4A, 0x5C, 0x8A));
    sky.setColorAt(1, QColor(0xA0, 0x5C, 0x3E));
    painter.fillRect(QRectF(QPointF(), size), sky);
    painter.drawImage(kMargin, kMargin, picture);
    painter.end();
    if (desktop.save(file)) return true;
    (void)std::fprintf(stderr, "Cannot write %s\n", qPrintable(file));
    return false;
}

bool writeSettingsWindow(const QDir& folder, const QString& suffix) {
    Stage stage;
    stage.dark();
    SettingsWindow settings(stage.panel.content().engine());
    settings.show();
    stage.panel.settle(100);
    bool written = save(settings.window()->grabWindow(),
                        folder.filePath(QStringLiteral("settings-window%1.png").arg(suffix)));
    if (auto* tab = stage.panel.named(QStringLiteral("Rules"), settings.window()))
        stage.panel.click(tab);
    stage.panel.settle(100);
    written &= save(settings.window()->grabWindow(),
                    folder.filePath(QStringLiteral("settings-rules%1.png").arg(suffix)));
    return written;
}

} // namespace

QStringList sceneNames() {
    QStringList names;
    for (const auto& scene : scenes())
        names.push_back(QString::fromLatin1(scene.name));
    return names;
}

bool writePictures(const QString& folder, const QStringList& only, const QString& suffix) {
    const QDir directory(folder);
    if (!directory.mkpath(QStringLiteral("."))) return false;
    bool written = true;
    for (const auto& scene : scenes()) {
        const auto name = QString::fromLatin1(scene.name);
        if (!only.isEmpty() && !only.contains(name)) continue;
        Stage stage;
        stage.panel.show();
        scene.arrange(stage);
        stage.panel.settle(300);
        written &= save(stage.panel.picture(),
                        directory.filePath(QStringLiteral("%1%2.png").arg(name, suffix)));
    }
    if (only.isEmpty()) written &= writeSettingsWindow(directory, suffix);
    return written;
}

} // namespace halvo
