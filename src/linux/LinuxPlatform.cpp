#include "linux/LinuxPlatform.h"

#include "linux/files/HelperProgram.h"
#include "linux/files/XdgDirectories.h"
#include "loudness/RaisedDevicesRecord.h"
#include "nowplaying/TagService.h"

#include <QCoreApplication>

#include <chrono>
#include <cstdlib>
#include <string>
#include <utility>

namespace halvo {

namespace {

using std::chrono::milliseconds;

constexpr const char* kGuardProgram = "halvo-session-guard";

/// A running server has reported its devices by then; a later one is noticed later.
constexpr milliseconds kLongestStart{2000};
/// Restoring the devices takes a fraction of it.
constexpr milliseconds kLongestQuit{8000};
/// The SIGTERM connection usually exists; this only covers a signal right after the start.
constexpr milliseconds kLongestSignalWait{100};
/// A guard that restores what the last run left has finished by then.
constexpr milliseconds kLongestRestore{1500};

/// Another tag service, for tests and the demonstration: HALVO_TAG_SERVICE, a URL such as
/// http://127.0.0.1:4711.
std::string otherTagService() {
    const char* address = std::getenv("HALVO_TAG_SERVICE");
    return address != nullptr ? address : "";
}

/// Scheme and host of the tag service.
std::string tagServiceOrigin() {
    const auto address = tagServiceAddress("");
    return address.substr(0, address.find('/', address.find("//") + 2));
}

} // namespace

void LinuxPlatform::prepareProcess() {
    LinuxTerminationSignal::blockBeforeThreads();
}

std::string LinuxPlatform::toolkitScreens() {
    std::string screens;
    if (!qEnvironmentVariableIsEmpty("DISPLAY")) screens += "xcb;";
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) screens += "wayland;";
    return screens.empty() ? screens : screens + "offscreen";
}

bool LinuxPlatform::quitRunning() {
    return ApplicationService::quitOther(kLongestQuit) != ApplicationService::Departure::stays;
}

std::expected<std::unique_ptr<PlatformHost>, PlatformRefusal> LinuxPlatform::create() {
    auto desktop = std::make_unique<Desktop>();
    if (desktop->service.claim() == ApplicationService::Claim::alreadyRunning) {
        return std::unexpected(PlatformRefusal::alreadyRunning);
    }
    auto connection = PipeWireConnection::create();
    auto signalConnection = PipeWireConnection::create();
    if (!connection || !signalConnection) return std::unexpected(PlatformRefusal::noSoundSystem);
    (void)connection->waitUntilReady(
        kLongestStart); // without a server the interface still comes up
    return std::unique_ptr<PlatformHost>(
        new LinuxPlatform(std::move(desktop), std::move(connection), std::move(signalConnection)));
}

LinuxPlatform::LinuxPlatform(std::unique_ptr<Desktop> desktop, Connection connection,
                             Connection signalConnection)
    : desktop_(std::move(desktop)), userDefaults_(JsonUserDefaults::standardPath(), systemLog_),
      driverInstallation_(QCoreApplication::applicationDirPath().toStdString()),
      statusService_([this] { mainQueue_.stir(); }),
      screen_(LinuxDesktop::create(mainQueue_, desktop_->application)),
      mediaHelper_(QCoreApplication::applicationDirPath().toStdString()),
      httpSession_(tagServiceOrigin(), otherTagService()), connection_(std::move(connection)),
      serverReport_(*connection_, mainQueue_, systemLog_), server_(*connection_, mainQueue_),
      sessionLock_(SessionLock::take(sessionFiles().lock, kLongestRestore)),
      sessionGuard_(
          mainQueue_, systemLog_,
          helperProgram(QCoreApplication::applicationDirPath().toStdString(), kGuardProgram)),
      audioHardware_(server_, gate_, mainQueue_, systemLog_,
                     RaisedDevicesRecord(fileSystem_, sessionFiles().record, &systemLog_),
                     [this] { sessionGuard_.watch(); }),
      outputUnits_(*connection_, gate_, [this](bool flows) { mainQueue_.setQuiet(!flows); }),
      signalConnection_(std::move(signalConnection)), signalServer_(*signalConnection_, mainQueue_),
      terminationSignal_(
          audioHardware_,
          [this] {
              (void)signalConnection_->waitUntilReady(kLongestSignalWait);
              return LoudnessGuard::forRestore(
                  signalServer_, RaisedDevicesRecord(fileSystem_, sessionFiles().record, nullptr));
          },
          JsonUserDefaults::standardPath(), [this] { sessionGuard_.dismiss(); }) {
    mainQueue_.setWatch([this] { return screen_ && screen_->isWatched(); });
    desktop_->service.onActivated([this] {
        if (screen_) screen_->bringToFront();
    });
}

LinuxPlatform::~LinuxPlatform() = default;

Platform LinuxPlatform::platform() {
    Alert& alert = screen_ ? static_cast<Alert&>(screen_->alert()) : consoleAlert_;
    StatusItem& item = screen_ ? static_cast<StatusItem&>(screen_->statusItem()) : noStatusItem_;
    PanelWindow& panel =
        screen_ ? static_cast<PanelWindow&>(screen_->panelWindow()) : noPanelWindow_;
    return {.audioHardware = audioHardware_,
            .outputUnits = outputUnits_,
            .sharedMemory = sharedMemory_,
            .mainQueue = mainQueue_,
            .userDefaults = userDefaults_,
            .fileSystem = fileSystem_,
            .systemLog = systemLog_,
            .standardOutput = standardOutput_,
            .alert = alert,
            .driverInstallation = driverInstallation_,
            .terminationSignal = terminationSignal_,
            .application = desktop_->application,
            .statusPublisher = statusService_,
            .backgroundQueue = backgroundQueue_,
            .httpSession = httpSession_,
            .childProcesses = childProcesses_,
            .scriptRunner = scriptRunner_,
            .imageReader = imageReader_,
            .mediaHelper = mediaHelper_,
            .unicodeText = unicodeText_,
            .statusItem = item,
            .panelWindow = panel};
}

} // namespace halvo
