#pragma once

#include "posix/SessionFiles.h"

#include <chrono>
#include <functional>
#include <memory>

namespace halvo {

class AudioServer;
class FileSystem;
class UserDefaults;

/// What a restore needs of the system that it runs on. One thread.
class RestoreHost {
  public:
    virtual ~RestoreHost() = default;

    virtual FileSystem& files() = 0;
    virtual SessionFiles sessionFiles() = 0;
    /// The application's settings as they are on disk.
    virtual std::unique_ptr<UserDefaults> defaults() = 0;

    /// Once it was there.
    virtual AudioServer& server() = 0;
    /// False when the server is not there in that time, or its library refuses.
    virtual bool waitForServer(std::chrono::milliseconds longest) = 0;
    /// Waits until the system has kept what was restored, or until `isUndone`; false when the
    /// server went before that.
    virtual bool waitUntilKept(const std::function<bool()>& isUndone) = 0;
};

/// The host for the system that this is built for. Does not connect to the server yet.
std::unique_ptr<RestoreHost> makeRestoreHost();

} // namespace halvo
