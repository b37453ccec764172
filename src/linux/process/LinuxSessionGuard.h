#pragma once

#include "base/Lifetime.h"
#include "linux/process/SpawnedChild.h"
#include "platform/MainQueue.h"
#include "posix/FileDescriptor.h"

#include <filesystem>
#include <memory>
#include <optional>

class QSocketNotifier;

namespace halvo {

class SystemLog;

/// Runs the program halvo-session-guard, which restores the devices' levels and the default output
/// when this process ends without having done so. The environment variable HALVO_SESSION_GUARD
/// names another program; empty means none. Main thread, except `dismiss`.
class LinuxSessionGuard {
  public:
    /// `directory` holds the application's program. Queue and log must outlive this.
    LinuxSessionGuard(MainQueue& queue, SystemLog& log, const std::filesystem::path& directory);
    /// Dismisses the guard.
    ~LinuxSessionGuard();
    LinuxSessionGuard(const LinuxSessionGuard&) = delete;
    LinuxSessionGuard& operator=(const LinuxSessionGuard&) = delete;

    /// There is something to restore: starts the guard. One that ends is restarted, after a second
    /// and each time after twice as long, up to a minute. The application also works without one.
    void watch();
    /// Everything is given back: the guard only stays until that is kept, too. Any thread.
    void dismiss() const;

  private:
    void start();
    void ended();

    MainQueue& queue_;
    SystemLog& log_;
    std::filesystem::path program_; ///< empty: none
    // Both ends stay open here, so the guard sees the end of the pipe when this process ends.
    FileDescriptor readEnd_;
    FileDescriptor writeEnd_;
    bool isWatched_ = false;
    MainQueue::Duration delay_;
    std::optional<SpawnedChild> child_;
    std::unique_ptr<QSocketNotifier> notifier_;
    Lifetime lifetime_;
};

} // namespace halvo
