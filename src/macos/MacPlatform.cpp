#include "macos/MacPlatform.h"

namespace halvo {

std::expected<std::unique_ptr<PlatformHost>, PlatformRefusal> MacPlatform::create() {
    return std::make_unique<MacPlatform>();
}

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
