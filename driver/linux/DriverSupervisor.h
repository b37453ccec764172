#pragma once

#include "driver/linux/ProcessDescriptor.h"
#include "driver/linux/RestartPace.h"
#include "driver/linux/SupervisorLock.h"

#include <functional>
#include <memory>
#include <sys/types.h>

namespace halvo::driver {

/// Starts the driver in a process of its own and starts it again whenever it dies; sleeps
/// otherwise. It ends when the driver ends by itself, which a driver that is kept does with the
/// sound server. There is one for each sound server. One thread, before any other exists.
class DriverSupervisor {
  public:
    /// What the driver's process runs, given the keeper's number; its exit status.
    using RunDriver = std::function<int(pid_t keeper)>;

    explicit DriverSupervisor(RunDriver runDriver) : runDriver_(std::move(runDriver)) {}
    ~DriverSupervisor();
    DriverSupervisor(const DriverSupervisor&) = delete;
    DriverSupervisor& operator=(const DriverSupervisor&) = delete;

    /// Until the driver ends by itself or SIGTERM or SIGINT ends both; the exit status. `adopted`:
    /// a driver that runs already and has lost its keeper, this process's parent; 0: none.
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
    int keep();

    const RunDriver runDriver_;
    const SupervisorLock lock_;
    int signals_ = -1;
    std::unique_ptr<ProcessDescriptor> driver_;
    RestartPace pace_;
};

} // namespace halvo::driver
