#pragma once

#include "fake/FakeAudioHardware.h"
#include "fake/FakeDesktop.h"
#include "fake/FakeMainQueue.h"
#include "fake/FakeOutputUnit.h"
#include "fake/FakeProcesses.h"
#include "fake/FakeServices.h"
#include "fake/FakeSharedMemory.h"
#include "fake/FakeUnicodeText.h"
#include "fake/FakeUserDefaults.h"
#include "platform/Platform.h"

namespace halvo {

/// All fakes together: a system in memory and virtual time.
struct FakePlatform {
    CallLog log;
    FakeMainQueue mainQueue;
    FakeAudioHardware audioHardware{mainQueue, log};
    FakeOutputUnitFactory outputUnits{log};
    FakeSharedMemory sharedMemory;
    FakeUserDefaults userDefaults;
    FakeFileSystem fileSystem;
    FakeSystemLog systemLog;
    FakeStandardOutput standardOutput;
    FakeAlert alert;
    FakeDriverInstallation driverInstallation;
    FakeTerminationSignal terminationSignal;
    FakeApplication application;
    FakeStatusPublisher statusPublisher;
    FakeBackgroundQueue backgroundQueue;
    FakeHTTPSession httpSession;
    FakeChildProcessLauncher childProcesses{log};
    FakeScriptRunner scriptRunner;
    FakeImageReader imageReader;
    FakeMediaHelper mediaHelper;
    FakeUnicodeText unicodeText;
    FakeStatusItem statusItem;
    FakePanelWindow panelWindow;

    /// Pending work may use the other fakes.
    ~FakePlatform() { mainQueue.discard(); }

    Platform platform() { return platform(audioHardware); }
    /// All of it except the hardware.
    Platform platform(AudioHardware& hardware) {
        return {.audioHardware = hardware,
                .outputUnits = outputUnits,
                .sharedMemory = sharedMemory,
                .mainQueue = mainQueue,
                .userDefaults = userDefaults,
                .fileSystem = fileSystem,
                .systemLog = systemLog,
                .standardOutput = standardOutput,
                .alert = alert,
                .driverInstallation = driverInstallation,
                .terminationSignal = terminationSignal,
                .application = application,
                .statusPublisher = statusPublisher,
                .backgroundQueue = backgroundQueue,
                .httpSession = httpSession,
                .childProcesses = childProcesses,
                .scriptRunner = scriptRunner,
                .imageReader = imageReader,
                .mediaHelper = mediaHelper,
                .unicodeText = unicodeText,
                .statusItem = statusItem,
                .panelWindow = panelWindow};
    }
};

} // namespace halvo
