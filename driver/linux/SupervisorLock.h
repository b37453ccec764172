#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>

namespace halvo::driver {

/// Allows one supervisor for each sound server: a lock in the server's runtime directory that names
/// its holder and is released when that process ends, in any way. One thread.
class SupervisorLock {
  public:
    using Milliseconds = std::chrono::milliseconds;

    SupervisorLock();
    ~SupervisorLock();
    SupervisorLock(const SupervisorLock&) = delete;
    SupervisorLock& operator=(const SupervisorLock&) = delete;

    /// Waits for a holder that is about to end. True where there is no runtime directory: the
    /// ring's own lock is left then.
    bool acquire(Milliseconds patience) const;
    /// The process that holds it, if another one does.
    std::optional<pid_t> holder() const;
    /// Asks the holder to end and waits. True when nobody holds it any more.
    bool endHolder(Milliseconds patience) const;

  private:
    int descriptor_ = -1;
};

} // namespace halvo::driver
