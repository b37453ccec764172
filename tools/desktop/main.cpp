#include "desktop/VirtualDesktop.h"
#include "session/Player.h"

#include <QDir>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <numbers>

namespace {

using halvo::desktop::VirtualDesktop;
using namespace std::chrono_literals;

constexpr QPoint kItem{1000, 10};

/// Three notes that swell and fade, so that the icon moves.
std::vector<float> music() {
    constexpr double kRate = 48000;
    std::vector<float> samples;
    for (int n = 0; n < 20 * 48000; ++n) {
        const double time = n / kRate;
        const double swell = 0.6 + 0.4 * std::sin(2 * std::numbers::pi * 3.1 * time);
        double value = 0;
        for (const double frequency : {110.0, 440.0, 2500.0})
            value += 0.02 * swell * std::sin(2 * std::numbers::pi * frequency * time);
        samples.insert(samples.end(), 2, static_cast<float>(value));
    }
    return samples;
}

/// Writes a picture of the screen once it has stopped changing.
void save(const VirtualDesktop& desktop, const QString& path) {
    QRect area;
    (void)VirtualDesktop::waitFor([&] {
        const QRect now = desktop.drawnArea();
        return !now.isEmpty() && std::exchange(area, now) == now;
    });
    VirtualDesktop::rest(300ms);
    const bool written = desktop.grab().copy(desktop.drawnArea()).save(path);
    (void)std::printf("%s%s\n", qPrintable(path), written ? "" : " cannot be written");
}

void saveIcon(VirtualDesktop& desktop, const QString& path) {
    const QImage icon = desktop.tray().icon();
    const bool written = icon.scaled(icon.size() * 8).save(path);
    (void)std::printf("%s%s\n", qPrintable(path), written ? "" : " cannot be written");
}

void takePictures(VirtualDesktop& desktop, const QDir& folder) {
    if (!desktop.waitForItem()) throw std::runtime_error("The item does not appear.");
    saveIcon(desktop, folder.filePath(QStringLiteral("status-idle.png")));
    desktop.startDriver();
    const halvo::session::Player player(desktop.session().serverSocket(), music(), 48000);
    const int before = desktop.tray().newIcons();
    (void)VirtualDesktop::waitFor([&] { return desktop.tray().newIcons() > before + 30; });
    saveIcon(desktop, folder.filePath(QStringLiteral("status-live.png")));
    desktop.clickItem(kItem);
    save(desktop, folder.filePath(QStringLiteral("panel.png")));
    desktop.portal().setDark(true);
    save(desktop, folder.filePath(QStringLiteral("panel-dark.png")));
    desktop.portal().setDark(false);
    desktop.clickItem(kItem);
    (void)VirtualDesktop::waitFor([&] { return desktop.drawnArea().isEmpty(); });
    desktop.tray().chooseMenuEntry(1);
    save(desktop, folder.filePath(QStringLiteral("settings.png")));
}

} // namespace

/// Runs the application on a virtual screen and writes pictures of it into a folder.
int main(int argc, char** argv) {
    if (argc != 2) {
        (void)std::fputs("Usage: halvo-desktop FOLDER\n", stderr);
        return 2;
    }
    try {
        const QDir folder(QDir::current().absoluteFilePath(QString::fromLocal8Bit(argv[1])));
        (void)folder.mkpath(QStringLiteral("."));
        VirtualDesktop desktop({HALVO_APPLICATION, HALVO_AUDIO_DEVICE, HALVO_DRIVER_BUNDLE_PATH});
        desktop.startApplication();
        takePictures(desktop, folder);
        desktop.stopApplication();
    } catch (const std::exception& error) {
        (void)std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
