#pragma once

#include "loudness/LoudnessGuard.h"
#include "loudness/OutputGate.h"
#include "macos/CoreAudioHardware.h"
#include "macos/CoreAudioOutputUnit.h"
#include "macos/CoreAudioOwnOutput.h"
#include "macos/MacDesktop.h"
#include "macos/MacDriverInstallation.h"
#include "macos/MacFileSystem.h"
#include "macos/MacMediaHelper.h"
#include "macos/MacScriptRunner.h"
#include "macos/MacSharedMemory.h"
#include "macos/MacSystemLog.h"
#include "macos/MacTerminationSignal.h"
#include "macos/MacUserDefaults.h"
#include "platform/NoDesktop.h"
#include "platform/PlatformHost.h"
#include "posix/ProcessStandardOutput.h"
#include "posix/SessionLock.h"
#include "qt/QtApplication.h"
#include "qt/QtBackgroundQueue.h"
#include "qt/QtChildProcesses.h"
#include "qt/QtHTTPSession.h"
#include "qt/QtImageReader.h"
#include "qt/QtMainQueue.h"
#include "qt/QtSessionGuard.h"
#include "qt/QtUnicodeText.h"

namespace halvo {

/// A Mac. The system itself opens one instance of an application only; the session's lock holds off
/// one that was started in another way. Main thread only.
class MacPlatform final : public PlatformHost {
  public:
    static void prepareProcess() {} ///< no signal is blocked here
    static std::string toolkitScreens() { return "cocoa"; }
    static std::expected<std::unique_ptr<PlatformHost>, PlatformRefusal> create();
    static bool quitRunning() { return MacDesktop::quitOthers(); }

    Platform platform() override;
    int run() override { return application_.run(); }

  private:
    explicit MacPlatform(SessionLock sessionLock);

    SessionLock sessionLock_;
    QtApplication application_;
    QtMainQueue mainQueue_;
    MacSystemLog systemLog_;
    ProcessStandardOutput standardOutput_;
    MacFileSystem fileSystem_;
    MacUserDefaults userDefaults_;
    MacDriverInstallation driverInstallation_;
    MacSharedMemory sharedMemory_;
    NoStatusPublisher statusPublisher_;
    MacDesktop desktop_{mainQueue_, application_};

    QtUnicodeText unicodeText_;
    MacMediaHelper mediaHelper_;
    QtImageReader imageReader_;
    MacScriptRunner scriptRunner_;
    QtChildProcessLauncher childProcesses_;
    QtHTTPSession httpSession_;
    QtBackgroundQueue backgroundQueue_; // after all services that its work may use

    CoreAudioOwnOutput ownOutput_;
    CoreAudioHardware server_{ownOutput_};
    OutputGate gate_;
    QtSessionGuard sessionGuard_;
    LoudnessGuard audioHardware_;
    CoreAudioOutputUnitFactory outputUnits_{gate_, ownOutput_};

    // For SIGTERM's thread: it listens to nothing and plays nothing.
    CoreAudioOwnOutput noOutput_;
    CoreAudioHardware signalServer_{noOutput_};
    MacTerminationSignal terminationSignal_;
};

} // namespace halvo
