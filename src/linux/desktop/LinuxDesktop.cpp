#include "linux/desktop/LinuxDesktop.h"

#include "linux/desktop/OutsideClickMonitor.h"
#include "platform/Application.h"
#include "qt/ApplicationObject.h"
#include "qt/QtMainQueue.h"

#include <QGuiApplication>

#include <utility>

namespace halvo {

namespace {

// For a bar of unknown colour: visible on dark and light ones.
constexpr QRgb kToneOnAnyBar = 0xFF8E8E93;
constexpr QRgb kToneOnDark = 0xFFF2F2F5;
constexpr QRgb kToneOnLight = 0xFF26262A;
constexpr QRgb kOwnAccent = 0xFF007AFF;

bool isOnX11() {
    return QGuiApplication::platformName() == QStringLiteral("xcb");
}

std::shared_ptr<void> watchPresses(std::function<void()> pressed, std::function<void()> released) {
    if (!isOnX11()) return nullptr;
    return OutsideClickMonitor::create(std::move(pressed), std::move(released));
}

bool hasCompositor() {
    return !isOnX11() || OutsideClickMonitor::hasCompositor();
}

} // namespace

std::unique_ptr<LinuxDesktop> LinuxDesktop::create(QtMainQueue& queue, Application& application) {
    if (!hasScreen()) return nullptr;
    return std::unique_ptr<LinuxDesktop>(new LinuxDesktop(queue, application));
}

LinuxDesktop::LinuxDesktop(QtMainQueue& queue, Application& application)
    : panelWindow_({.mainQueue = queue,
                    .volumeTaper = VolumeTaper::cubeRoot,
                    .quit = [&application] { application.terminate(); },
                    .watchPresses = watchPresses,
                    .hasCompositor = hasCompositor}),
      autostart_(QCoreApplication::applicationFilePath().toStdString()),
      statusItem_(
          {{QStringLiteral("Settings…"), [this] { panelWindow_.showSettingsWindow(); }},
           {QStringLiteral("Start at Login"),
            [this] { (void)autostart_.setEnabled(!autostart_.isEnabled()); }, // the mark shows it
            [this] { return autostart_.isEnabled(); }},
           {QStringLiteral("Quit Halvo"), [&application] { application.terminate(); }}}),
      appearance_([this] { applyAppearance(); }) {
    applyAppearance();
    panelWindow_.onShown = [&queue] { queue.stir(); };
    statusItem_.onLive = [&queue] { queue.stir(); };
}

bool LinuxDesktop::isWatched() const {
    return panelWindow_.isVisible() || statusItem_.isLive();
}

void LinuxDesktop::applyAppearance() {
    const auto& look = appearance_.appearance();
    panelWindow_.setSystemAppearance(look);
    const auto dark = appearance_.isDark();
    StatusTones tones{QColor::fromRgb(dark ? (*dark ? kToneOnDark : kToneOnLight) : kToneOnAnyBar),
                      QColor::fromRgb(kOwnAccent)};
    if (look.accent) {
        tones.accent = QColor::fromRgbF(static_cast<float>(look.accent->red),
                                        static_cast<float>(look.accent->green),
                                        static_cast<float>(look.accent->blue));
    }
    statusItem_.setTones(tones);
}

void LinuxDesktop::bringToFront() {
    if (!panelWindow_.isVisible()) return statusItem_.click();
    panelWindow_.window()->raise();
    panelWindow_.window()->requestActivate();
}

} // namespace halvo
