#pragma once

#include <memory>

namespace halvo {

class AudioHardware;
class OutputUnitFactory;
class SharedMemory;
class MainQueue;
class UserDefaults;
class FileSystem;
class SystemLog;
class StandardOutput;
class Alert;
class DriverInstallation;
class TerminationSignal;
class Application;
class StatusPublisher;
class BackgroundQueue;
class HTTPSession;
class ChildProcessLauncher;
class ScriptRunner;
class ImageReader;
class MediaHelper;
class UnicodeText;
class StatusItem;
class PanelWindow;

/// All services that Halvo needs from the system. They live as long as the bundle's owner and
/// outlive the application delegate.
struct Platform {
    AudioHardware& audioHardware;
    OutputUnitFactory& outputUnits;
    SharedMemory& sharedMemory;
    MainQueue& mainQueue;
    UserDefaults& userDefaults;
    FileSystem& fileSystem;
    SystemLog& systemLog;
    StandardOutput& standardOutput;
    Alert& alert;
    DriverInstallation& driverInstallation;
    TerminationSignal& terminationSignal;
    Application& application;
    StatusPublisher& statusPublisher;
    BackgroundQueue& backgroundQueue;
    HTTPSession& httpSession;
    ChildProcessLauncher& childProcesses;
    ScriptRunner& scriptRunner;
    ImageReader& imageReader;
    MediaHelper& mediaHelper;
    UnicodeText& unicodeText;
    StatusItem& statusItem;
    PanelWindow& panelWindow;
};

} // namespace halvo
