#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>

namespace halvo {

/// Who may write levels and default to the sound server: one thread at a time, and from the
/// beginning of the end on only who restores. Any thread, but for `beginRestore`.
class WriteAccess {
  public:
    enum class Phase : std::uint8_t {
        running,   ///< devices may be raised
        stopped,   ///< the end has begun on another thread, and nothing is written here any more
        restoring, ///< what was changed is restored, and nothing is raised
    };
    using Lock = std::unique_lock<std::mutex>;

    Phase phase() const { return phase_; }
    bool isRunning() const { return phase_ == Phase::running; }

    /// Held around everything that could raise.
    Lock lock() { return Lock(writing_); }
    /// A lock that holds nothing when it is not to be had within that time.
    Lock lockWithin(std::chrono::milliseconds time);

    /// From here on nothing is raised. Does not wait for a raise that has begun.
    void stop();
    /// The guard's own thread.
    void beginRestore() { phase_ = Phase::restoring; }

  private:
    std::mutex writing_;
    std::atomic<Phase> phase_{Phase::running};
};

} // namespace halvo
