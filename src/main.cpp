#include "PlatformFactory.h"
#include "app/AppDelegate.h"
#include "platform/MainQueue.h"

#include <QCoreApplication>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace {

constexpr const char* kHelp =
    "Usage: halvo [OPTION]\n"
    "Runs the system-wide equalizer. If it is already running, opens its panel instead.\n"
    "\n"
    "  --quit     quit the running instance and wait until it has ended\n"
    "  --help     show this text and exit\n"
    "  --version  show the version and exit\n";

/// The exit status of an option that only prints; nothing when the program is to run.
std::optional<int> answerOption(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0) return std::printf("%s", kHelp) < 0;
        if (std::strcmp(argv[i], "--version") == 0) return std::puts("Halvo " HALVO_VERSION) < 0;
    }
    return std::nullopt;
}

bool isToQuit(int argc, char** argv) {
    return argc > 1 && std::strcmp(argv[1], "--quit") == 0;
}

int quitRunning(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (halvo::quitRunningInstance()) return EXIT_SUCCESS;
    (void)std::fputs("Halvo did not quit.\n", stderr);
    return EXIT_FAILURE;
}

int explain(halvo::PlatformRefusal refusal) {
    if (refusal == halvo::PlatformRefusal::alreadyRunning) {
        (void)std::puts("Halvo is already running.");
        return EXIT_SUCCESS;
    }
    (void)std::fputs("Halvo could not initialize the sound system.\n", stderr);
    return EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv) {
    if (const auto status = answerOption(argc, argv)) return *status;
    if (isToQuit(argc, argv)) return quitRunning(argc, argv);
    halvo::preparePlatform();
    const auto application = halvo::makeApplicationObject(argc, argv);
    // Qt has just set the user's locale; numbers in files and logs must not depend on it.
    (void)std::setlocale(LC_NUMERIC, "C");

    const auto host = halvo::makePlatform();
    if (!host) return explain(host.error());
    const auto platform = (*host)->platform();
    const auto delegate = halvo::AppDelegate::create(platform);
    QObject::connect(application.get(), &QCoreApplication::aboutToQuit,
                     [&delegate] { delegate->applicationWillTerminate(); });
    // Inside the main loop: a quit request during start-up would be lost before it runs.
    platform.mainQueue.async([&delegate] { delegate->applicationDidFinishLaunching(); });
    return (*host)->run();
}
