#include "macos/MacPlatform.h"

#include "loudness/RaisedDevicesRecord.h"
#include "macos/MacDirectories.h"

#include <QCoreApplication>

#include <chrono>
#include <filesystem>
#include <utility>

namespace halvo {

namespace {

/// A guard that restores what the last run left has finished by then.
constexpr std::chrono::milliseconds kLongestRestore{1500};

std::filesystem::path besideProgram(const char* name) {
    return std::filesystem::path(QCoreApplication::applicationDirPath().toStdString()) / name;
}

} // namespace

std::expected<std::unique_ptr<PlatformHost>, PlatformRefusal> MacPlatform::create() {
    auto sessionLock = SessionLock::take(sessionFiles().lock, kLongestRestore);
    if (!sessionLock) return std::unexpected(PlatformRefusal::alreadyRunning);
    return std::unique_ptr<PlatformHost>(new MacPlatform(std::move(*sessionLock)));
}

MacPlatform::MacPlatform(SessionLock sessionLock)
    : sessionLock_(std::move(sessionLock)),
      sessionGuard_(mainQueue_, systemLog_, besideProgram("halvo-session-guard")),
      audioHardware_(server_, gate_, mainQueue_, systemLog_,
                     RaisedDevicesRecord(fileSystem_, sessionFiles().record, &systemLog_),
                     [this] { sessionGuard_.watch(); }),
      terminationSignal_(
          audioHardware_,
          [this] {
              return LoudnessGuard::forRestore(
                  signalServer_, RaisedDevicesRecord(fileSystem_, sessionFiles().record, nullptr));
          },
          [this] { sessionGuard_.dismiss(); }) {}

Platform MacPlatform::platform() {
    return {.audioHardware = audioHardware_,
            .outputUnits = outputUnits_,
            .sharedMemory = sharedMemory_,
            .mainQueue = mainQueue_,
            .userDefaults = userDefaults_,
            .fileSystem = fileSystem_,
            .systemLog = systemLog_,
            .standardOutput = standardOutput_,
            .alert = desktop_.alert(),
            .driverInstallation = driverInstallation_,
            .terminationSignal = terminationSignal_,
            .application = application_,
            .statusPublisher = statusPublisher_,
            .backgroundQueue = backgroundQueue_,
            .httpSession = httpSession_,
            .childProcesses = childProcesses_,
            .scriptRunner = scriptRunner_,
            .imageReader = imageReader_,
            .mediaHelper = mediaHelper_,
            .unicodeText = unicodeText_,
            .statusItem = desktop_.statusItem(),
            .panelWindow = desktop_.panelWindow()};
}

} // namespace halvo
