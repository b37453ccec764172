#include "AnimationClock.h"
#include "PanelFixture.h"

#include "ui/SettingsWindow.h"

#include <QQuickView>

#include <set>

namespace halvo {

namespace {

TEST_F(PanelTest, PickedAndTypedColorsBecomeTheAccent) {
    open("Settings");
    open("Add custom color");
    auto* const editor = item("ColorEditor");
    ASSERT_TRUE(editor);
    const struct {
        int plane;
        QPointF inside;
        QPointF beyond; // the pure colour, then red
    } drags[] = {{0, {200, 20}, {400, -9}}, {1, {20, 6}, {-9, 6}}};
    for (const auto& [index, inside, beyond] : drags) {
        auto* const plane = item("ColorPlane", index);
        panel.press(plane->mapToScene(inside));
        panel.move(plane->mapToScene(beyond));
        panel.release(plane->mapToScene(beyond));
    }
    EXPECT_EQ(editor->property("newColorHex").toString(), "FF0000");
    open("Add this color");
    ASSERT_EQ(settings().customColors.get().size(), 1U);
    EXPECT_EQ(settings().customColors.get()[0].hex, "#FF0000");
    EXPECT_EQ(settings().customColors.get()[0].name, "Custom");
    EXPECT_EQ(settings().accentColorHex.get(), "#FF0000");

    panel.settle(300); // until the editor is closed
    open("Add custom color");
    item("ColorEditor")->setProperty("newColorHex", "12345");
    open("Add this color");
    EXPECT_EQ(settings().customColors.get().size(), 1U);
    EXPECT_TRUE(item("ColorEditor"));
}

TEST_F(PanelTest, ColorEditorClosesInSteps) {
    AnimationClock clock;
    open("Settings");
    const int closed = panel.window().height();
    for (const char* close : {"Add this color", "Add custom color"}) {
        SCOPED_TRACE(close);
        open("Add custom color");
        const int opened = panel.window().height();
        const int editor = static_cast<int>(item("ColorEditor")->implicitHeight());
        EXPECT_EQ(opened, closed + editor) << "at once";
        item("ColorEditor")->setProperty("newColorHex", "123456");
        open(close);
        std::set<int> heights;
        for (int frame = 0; frame < 30; ++frame) {
            heights.insert(panel.window().height());
            EXPECT_EQ(panel.window().height(), panel.content().fittingSize().height());
            clock.pass(AnimationClock::kFrame);
            panel.settle(1);
        }
        EXPECT_GT(heights.size(), 10U);
        EXPECT_EQ(*heights.begin(), closed);
        EXPECT_EQ(*heights.rbegin(), opened);
        EXPECT_FALSE(item("ColorEditor"));
    }
}

TEST_F(PanelTest, CustomColorsAreReorderedAndDeleted) {
    AnimationClock clock;
    for (const char* hex : {"#111111", "#222222", "#333333"})
        settings().addCustomColor(hex, "Custom");
    settings().setAccentColorHex("#111111");
    open("Settings");
    const auto order = [this] {
        std::string text;
        for (const auto& color : settings().customColors.get())
            text += color.hex[1];
        return text;
    };
    // Where the circle of a colour is drawn, beside where it belongs.
    const auto offset = [this](int index) {
        auto* const place = item("CustomColorCircle", index);
        return (OfflinePanel::middle(panel.find("ColorCircle", 7 + index)) -
                OfflinePanel::middle(place))
            .x();
    };
    const auto start = OfflinePanel::middle(item("CustomColorCircle", 0));
    panel.press(start);
    for (int x = 0; x <= 60; x += 3)
        panel.move(start + QPointF(x, 0));
    EXPECT_EQ(order(), "231");
    EXPECT_EQ(offset(2), 2) << "under the pointer";
    EXPECT_EQ(offset(1), 29) << "still where it was";
    panel.release(start + QPointF(60, 0));
    clock.pass(100);
    EXPECT_GT(offset(1), 0) << "on its way";
    EXPECT_LT(offset(1), 29);
    clock.pass(200);
    for (int index = 0; index < 3; ++index)
        EXPECT_EQ(offset(index), 0);

    panel.click(item("CustomColorCircle", 2), Qt::RightButton);
    EXPECT_EQ(menuEntries(), QStringList{"Delete"});
    choose("Delete");
    EXPECT_EQ(order(), "23");
    EXPECT_EQ(settings().accentColorHex.get(), "native");
}

TEST_F(PanelTest, QuitRunsTheShutdownPath) {
    open("Settings");
    open("Quit Halvo");
    EXPECT_TRUE(machine.hasQuit());
    EXPECT_EQ(machine.fake().audioHardware.defaultOutput(),
              machine.fake().audioHardware.deviceForUID("speakers"));
}

TEST_F(PanelTest, SettingsWindowNamesItsAreasAndChangesNothing) {
    const int writes = machine.fake().userDefaults.writes;
    SettingsWindow window(panel.content().engine());
    window.show();
    panel.settle(50);
    EXPECT_EQ(window.window()->size(), QSize(480, 360));
    const struct {
        const char* tab;
        const char* text;
    } tabs[] = {{"General", "General settings"},
                {"Presets", "Manage presets: rename, reorder, import/export"},
                {"Rules", "Rules editor: Output Device \u2192 Preset, Main App \u2192 Preset"},
                {"Driver", "Driver install/uninstall, diagnostics"}};
    EXPECT_EQ(window.window()->title(), "General");
    for (const auto& [tab, text] : tabs) {
        panel.click(panel.named(tab, window.window()));
        auto* const form = panel.find("SettingsForm", 0, window.window());
        auto* const view =
            form ? form : panel.find(QString(tab) + "SettingsView", 0, window.window());
        ASSERT_TRUE(view) << tab;
        EXPECT_EQ(view->property("text").toString(), text);
    }
    EXPECT_EQ(machine.fake().userDefaults.writes, writes);
}

} // namespace

} // namespace halvo
