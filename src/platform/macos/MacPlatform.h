#pragma once

#include "platform/NoDesktop.h"
#include "platform/PlatformFactory.h"
#include "platform/macos/CoreAudioHardware.h"
#include "platform/macos/CoreAudioOutputUnit.h"
#include "platform/macos/MacDesktop.h"
#include "platform/macos/MacDriverInstallation.h"
#include "platform/macos/MacFileSystem.h"
#include "platform/macos/MacMediaHelper.h"
#include "platform/macos/MacScriptRunner.h"
#include "platform/macos/MacSharedMemory.h"
#include "platform/macos/MacSystemLog.h"
#include "platform/macos/MacTerminationSignal.h"
#include "platform/macos/MacUserDefaults.h"
#include "platform/posix/ProcessStandardOutput.h"
#include "platform/qt/QtApplication.h"
#include "platform/qt/QtBackgroundQueue.h"
#include "platform/qt/QtChildProcesses.h"
#include "platform/qt/QtHTTPSession.h"
#include "platform/qt/QtImageReader.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtUnicodeText.h"

namespace halvo {

/// A Mac. The system itself keeps an application to one instance. Main thread only.
class MacPlatform final : public PlatformHost {
  public:
    static void prepareProcess() {} ///< no signal is blocked here
    static std::string toolkitScreens() { return "cocoa"; }
    static std::expected<std::unique_ptr<PlatformHost>, PlatformRefusal> create();
    static bool quitRunning() { return MacDesktop::quitOthers(); }

    Platform platform() override;
    int run() override { return application_.run(); }

  private:
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
    QtBackgroundQueue backgroundQueue_; // after all that its work may use

    CoreAudioHardware audioHardware_;
    CoreAudioOutputUnitFactory outputUnits_;
    MacTerminationSignal terminationSignal_{audioHardware_};
};

} // namespace halvo
