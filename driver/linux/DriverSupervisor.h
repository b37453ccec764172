#pragma once

#include "driver/linux/ProcessDescriptor.h"
#include "driver/linux/RestartBackOff.h"
#include "driver/linux/SupervisorLock.h"

#include <functional>
#include <memory>
#include <sys/types.h>

namespace halvo::driver {

/// Runs the driver in a child process, restarts it when it crashes and sleeps otherwise. It ends
/// when the driver exits normally, which a supervised driver does when the sound server goes away.
/// There is one for each sound server. One thread, before any other exists.
class DriverSupervisor {
  public:
    /// What the child process runs, given the supervisor's process ID; its exit status.
    using RunDriver = std::function<int(pid_t supervisor)>;

    explicit DriverSupervisor(RunDriver runDriver) : runDriver_(std::move(runDriver)) {}
    ~DriverSupervisor();
    DriverSupervisor(const DriverSupervisor&) = delete;
    DriverSupervisor& operator=(const DriverSupervisor&) = delete;

    /// Until the driver exits normally, or SIGTERM or SIGINT ends both; the exit status. `adopted`:
    /// a running driver whose supervisor has died, and the parent of this process; 0: none.
    int run(pid_t adopted);
    /// The same in a process of its own, away from the caller's terminal; returns at once.
    int runInBackground();

  private:
    using Milliseconds = std::chrono::milliseconds;

    void takeSignals();
    bool startDriver();
    /// Sleeps until a signal comes (true) or the descriptor has something or time is up (false).
    bool signalComesBefore(int descriptor, Milliseconds longest) const;
    void endDriver() const;
    int supervise();

    const RunDriver runDriver_;
    const SupervisorLock lock_;
    int signals_ = -1;
    std::unique_ptr<ProcessDescriptor> driver_;
    RestartBackOff backOff_;
};

} // namespace halvo::driver
