#pragma once

#include <cstdint>
#include <map>
#include <optional>

namespace halvo::bench {

/// What every thread of a process has used so far, finer than the kernel's clock ticks.
class TaskUsage {
  public:
    /// Nothing when there is no such process.
    static std::optional<TaskUsage> of(int pid);

    /// Processor seconds, and how often threads fell asleep and were woken, since `earlier`.
    double cpuSecondsSince(const TaskUsage& earlier) const;
    std::uint64_t wakeupsSince(const TaskUsage& earlier) const;

  private:
    struct Counters {
        std::uint64_t nanoseconds = 0;
        std::uint64_t sleeps = 0;
    };
    std::map<int, Counters> tasks_; ///< by thread
};

} // namespace halvo::bench
