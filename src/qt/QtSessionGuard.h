#pragma once

#include "base/Lifetime.h"
#include "platform/MainQueue.h"
#include "posix/FileDescriptor.h"

#include <filesystem>
#include <memory>
#include <sys/types.h>

class QSocketNotifier;

namespace halvo {

class SystemLog;

/// Runs the program halvo-session-guard, which restores the devices' levels and the default output
/// when this process ends without having done so. The environment variable HALVO_SESSION_GUARD
/// names another program; empty means none. Main thread, except `dismiss`.
class QtSessionGuard {
  public:
    /// `program` is the path of halvo-session-guard. Queue and log must outlive this.
    QtSessionGuard(MainQueue& queue, SystemLog& log, std::filesystem::path program);
    /// Dismisses the guard.
    ~QtSessionGuard();
    QtSessionGuard(const QtSessionGuard&) = delete;
    QtSessionGuard& operator=(const QtSessionGuard&) = delete;

    /// There is something to restore: starts the guard. One that ends is restarted, after a second
    /// and each time after twice as long, up to a minute. The application also works without one.
    void watch();
    /// Everything is given back: the guard only stays until that is kept, too. Any thread.
    void dismiss() const;

  private:
    void start();
    void ended();
    void replaceLater();

    MainQueue& queue_;
    SystemLog& log_;
    std::filesystem::path program_; ///< empty: none
    // Both ends stay open here, so the guard sees the end of the pipe when this process ends.
    FileDescriptor readEnd_;
    FileDescriptor writeEnd_;
    bool isWatched_ = false;
    MainQueue::Duration delay_;
    pid_t child_ = 0;
    FileDescriptor output_; ///< of the guard, which writes nothing: ends with it
    std::unique_ptr<QSocketNotifier> notifier_;
    Lifetime lifetime_;
};

} // namespace halvo
