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

/// The program halvo-session-guard, which gives devices and default back when this process ends
/// without having done so. Environment variable HALVO_SESSION_GUARD: another program, empty: none.
/// Main thread, but for `dismiss`.
class LinuxSessionGuard {
  public:
    /// `directory` is the one of the application's own program. Queue and log must outlive this.
    LinuxSessionGuard(MainQueue& queue, SystemLog& log, const std::filesystem::path& directory);
    /// Dismisses it.
    ~LinuxSessionGuard();
    LinuxSessionGuard(const LinuxSessionGuard&) = delete;
    LinuxSessionGuard& operator=(const LinuxSessionGuard&) = delete;

    /// There is something to give back: from now on the guard runs. One that ends is started again,
    /// a second later and each time after twice as long, a minute at most; without one the
    /// application lives on.
    void watch();
    /// Nothing is left to give back: it ends and does nothing. Any thread.
    void dismiss() const;

  private:
    void start();
    void ended();

    MainQueue& queue_;
    SystemLog& log_;
    std::filesystem::path program_; ///< empty: none
    // Both ends stay open here, so the guard's end of it breaks when the process is gone.
    FileDescriptor readEnd_;
    FileDescriptor writeEnd_;
    bool isWatched_ = false;
    MainQueue::Duration delay_;
    std::optional<SpawnedChild> child_;
    std::unique_ptr<QSocketNotifier> notifier_;
    Lifetime lifetime_;
};

} // namespace halvo
