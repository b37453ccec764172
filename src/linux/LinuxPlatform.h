#pragma once

#include "linux/ServerReport.h"
#include "linux/desktop/LinuxDesktop.h"
#include "linux/files/JsonUserDefaults.h"
#include "linux/files/XdgFileSystem.h"
#include "linux/mpris/LinuxMediaHelper.h"
#include "linux/mpris/LinuxScriptRunner.h"
#include "linux/pipewire/PipeWireAudioHardware.h"
#include "linux/pipewire/PipeWireConnection.h"
#include "linux/pipewire/PipeWireOutputUnit.h"
#include "linux/process/ApplicationService.h"
#include "linux/process/LinuxDriverInstallation.h"
#include "linux/process/LinuxSharedMemory.h"
#include "linux/process/LinuxTerminationSignal.h"
#include "linux/process/StatusService.h"
#include "linux/process/SyslogSystemLog.h"
#include "loudness/LoudnessGuard.h"
#include "loudness/OutputGate.h"
#include "platform/NoDesktop.h"
#include "platform/PlatformHost.h"
#include "posix/ProcessStandardOutput.h"
#include "posix/SessionLock.h"
#include "qt/ConsoleAlert.h"
#include "qt/QtApplication.h"
#include "qt/QtBackgroundQueue.h"
#include "qt/QtChildProcesses.h"
#include "qt/QtHTTPSession.h"
#include "qt/QtImageReader.h"
#include "qt/QtMainQueue.h"
#include "qt/QtSessionGuard.h"
#include "qt/QtUnicodeText.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <optional>

namespace halvo {

/// A Linux desktop with PipeWire. Main thread only.
class LinuxPlatform final : public PlatformHost {
  public:
    /// Blocks SIGTERM; call before any thread starts.
    static void prepareProcess();
    /// X11 first, because a panel cannot be placed on Wayland. The last one always works; failure
    /// of the others would end the program.
    static std::string toolkitScreens();

    static std::expected<std::unique_ptr<PlatformHost>, PlatformRefusal> create();
    static bool quitRunning();
    /// Restores SIGTERM's default action.
    ~LinuxPlatform() override;

    Platform platform() override;
    int run() override { return desktop_->application.run(); }

  private:
    using Connection = std::unique_ptr<PipeWireConnection>;

    struct SignalRelease {
        ~SignalRelease() { LinuxTerminationSignal::unblock(); }
    };

    /// Created before the server connection: a second instance must touch nothing else.
    struct Desktop {
        QtApplication application;
        ApplicationService service{application};
    };

    LinuxPlatform(std::unique_ptr<Desktop> desktop, Connection connection,
                  Connection signalConnection);

    // First: SIGTERM stays blocked until everything below is destroyed.
    SignalRelease signalRelease_;
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
    QtChildProcessLauncher childProcesses_;
    QtHTTPSession httpSession_;
    QtBackgroundQueue backgroundQueue_; // after all services that its work may use

    Connection connection_;
    ServerReport serverReport_;
    PipeWireAudioHardware server_;
    OutputGate gate_;
    std::optional<SessionLock> sessionLock_; ///< nothing: another process did not release it
    QtSessionGuard sessionGuard_;
    LoudnessGuard audioHardware_;
    PipeWireOutputUnitFactory outputUnits_;

    // For the SIGTERM thread.
    Connection signalConnection_;
    PipeWireAudioHardware signalServer_;
    LinuxTerminationSignal terminationSignal_;
};

} // namespace halvo
