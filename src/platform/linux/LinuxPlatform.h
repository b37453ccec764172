#pragma once

#include "platform/NoDesktop.h"
#include "platform/PlatformFactory.h"
#include "platform/linux/ApplicationService.h"
#include "platform/linux/JsonUserDefaults.h"
#include "platform/linux/LinuxChildProcesses.h"
#include "platform/linux/LinuxDesktop.h"
#include "platform/linux/LinuxDriverInstallation.h"
#include "platform/linux/LinuxMediaHelper.h"
#include "platform/linux/LinuxScriptRunner.h"
#include "platform/linux/LinuxSessionGuard.h"
#include "platform/linux/LinuxSharedMemory.h"
#include "platform/linux/LinuxTerminationSignal.h"
#include "platform/linux/LoudnessGuard.h"
#include "platform/linux/OutputGate.h"
#include "platform/linux/PipeWireAudioHardware.h"
#include "platform/linux/PipeWireConnection.h"
#include "platform/linux/PipeWireOutputUnit.h"
#include "platform/linux/ServerReport.h"
#include "platform/linux/SessionLock.h"
#include "platform/linux/StatusService.h"
#include "platform/linux/SyslogSystemLog.h"
#include "platform/linux/XdgFileSystem.h"
#include "platform/posix/ProcessStandardOutput.h"
#include "platform/qt/ConsoleAlert.h"
#include "platform/qt/QtApplication.h"
#include "platform/qt/QtBackgroundQueue.h"
#include "platform/qt/QtHTTPSession.h"
#include "platform/qt/QtImageReader.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtUnicodeText.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <optional>

namespace halvo {

/// A Linux desktop with PipeWire. Main thread only.
class LinuxPlatform final : public PlatformHost {
  public:
    /// Blocks SIGTERM; before any thread starts.
    static void prepareProcess();
    /// X11 first: on Wayland a panel cannot be placed. The last one always works, where the others
    /// would end the program.
    static std::string toolkitScreens();

    static std::expected<std::unique_ptr<PlatformHost>, PlatformRefusal> create();
    static bool quitRunning();
    /// From here on SIGTERM ends the process at once again.
    ~LinuxPlatform() override;

    Platform platform() override;
    int run() override { return desktop_->application.run(); }

  private:
    using Connection = std::unique_ptr<PipeWireConnection>;

    struct SignalRelease {
        ~SignalRelease() { LinuxTerminationSignal::unblock(); }
    };

    /// What lives before the sound server is asked: a second instance must touch nothing else.
    struct Desktop {
        QtApplication application;
        ApplicationService service{application};
    };

    LinuxPlatform(std::unique_ptr<Desktop> desktop, Connection connection,
                  Connection signalConnection);

    SignalRelease signalRelease_; // first: a SIGTERM waits until everything below is gone
    std::unique_ptr<Desktop> desktop_;
    QtMainQueue mainQueue_;
    SyslogSystemLog systemLog_;
    ProcessStandardOutput standardOutput_;
    ConsoleAlert consoleAlert_;
    XdgFileSystem fileSystem_;
    JsonUserDefaults userDefaults_;
    LinuxDriverInstallation driverInstallation_;
    LinuxSharedMemory sharedMemory_;
    StatusService statusService_;
    NoStatusItem noStatusItem_;
    NoPanelWindow noPanelWindow_;
    std::unique_ptr<LinuxDesktop> screen_; ///< null where there is none

    QtUnicodeText unicodeText_;
    LinuxMediaHelper mediaHelper_;
    QtImageReader imageReader_;
    LinuxScriptRunner scriptRunner_;
    LinuxChildProcessLauncher childProcesses_;
    QtHTTPSession httpSession_;
    QtBackgroundQueue backgroundQueue_; // after all that its work may use

    Connection connection_;
    ServerReport serverReport_;
    PipeWireAudioHardware server_;
    OutputGate gate_;
    std::optional<SessionLock> sessionLock_; ///< nothing: another process would not let go of it
    LinuxSessionGuard sessionGuard_;
    LoudnessGuard audioHardware_;
    PipeWireOutputUnitFactory outputUnits_;

    // For the thread that takes SIGTERM, once it does.
    Connection signalConnection_;
    PipeWireAudioHardware signalServer_;
    LinuxTerminationSignal terminationSignal_;
};

} // namespace halvo
