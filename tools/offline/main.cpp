#include "offline/OfflineMachine.h"
#include "offline/OfflinePanel.h"
#include "offline/Pictures.h"
#include "ui/SettingsWindow.h"

#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTimer>

#include <chrono>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kSpectrumPeriod = 43; ///< milliseconds: 2048 frames at 48 kHz
constexpr int kTurnPeriod = 10;

/// Before the application object is made, which reads them.
void settleEnvironment(int argc, char** argv) {
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], "--scale") == 0) qputenv("QT_SCALE_FACTOR", argv[i + 1]);
        if (std::strcmp(argv[i], "--pictures") == 0 &&
            !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
    }
}

int run(bool dark, bool unfolded, int seconds) {
    using namespace halvo;
    OfflineMachine machine;
    machine.playTrack("Northern Lights", "The Fjord Quartet");
    OfflinePanel panel(machine);
    panel.content().setSystemAppearance({.dark = dark, .accent = std::nullopt});
    SettingsWindow settings(panel.content().engine());
    QObject::connect(&panel.content(), &PanelContent::settingsWindowRequested, &settings,
                     &SettingsWindow::show);
    panel.show();
    if (auto* fold = panel.named(QStringLiteral("Show EQ")); unfolded && fold) panel.click(fold);

    QElapsedTimer clock;
    clock.start();
    QTimer spectrum;
    QObject::connect(&spectrum, &QTimer::timeout, &spectrum,
                     [&] { machine.moveSpectrum(static_cast<double>(clock.elapsed()) / 1000.0); });
    spectrum.start(kSpectrumPeriod);
    QTimer turn;
    QObject::connect(&turn, &QTimer::timeout, &turn, [&] {
        machine.advance(std::chrono::milliseconds(kTurnPeriod));
        if (machine.hasQuit()) QGuiApplication::quit();
    });
    turn.start(kTurnPeriod);
    if (seconds > 0) QTimer::singleShot(seconds * 1000, &QGuiApplication::quit);
    return QGuiApplication::exec();
}

} // namespace

int main(int argc, char** argv) {
    settleEnvironment(argc, argv);
    halvo::PanelContent::prepareRenderer();
    QGuiApplication application(argc, argv);
    QCommandLineParser options;
    options.setApplicationDescription(
        QStringLiteral("The panel on a machine in memory, with a moving spectrum."));
    options.addHelpOption();
    options.addOptions({
        {QStringLiteral("pictures"),
         QStringLiteral("Write pictures of scenes to <folder>, and end."),
         QStringLiteral("folder")},
        {QStringLiteral("scene"), QStringLiteral("Only this scene; may be repeated."),
         QStringLiteral("name")},
        {QStringLiteral("scale"), QStringLiteral("Screen pixels per point."),
         QStringLiteral("factor")},
        {QStringLiteral("dark"), QStringLiteral("The dark look.")},
        {QStringLiteral("bands"), QStringLiteral("With the bands shown.")},
        {QStringLiteral("seconds"), QStringLiteral("End after so long."), QStringLiteral("count")},
    });
    options.process(application);
    if (options.isSet(QStringLiteral("pictures"))) {
        const auto scale = options.value(QStringLiteral("scale"));
        const auto suffix = scale.isEmpty() ? QString() : QStringLiteral("@%1x").arg(scale);
        const bool written = halvo::writePictures(options.value(QStringLiteral("pictures")),
                                                  options.values(QStringLiteral("scene")), suffix);
        return written ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    return run(options.isSet(QStringLiteral("dark")), options.isSet(QStringLiteral("bands")),
               options.value(QStringLiteral("seconds")).toInt());
}
