#pragma once

#include <optional>

namespace halvo::demo {

/// What a process has used so far, as the kernel counts it.
struct ProcessUsage {
    double cpuSeconds;  ///< user and system time of all its threads
    double residentMiB; ///< memory in RAM now

    /// Nothing when there is no such process.
    static std::optional<ProcessUsage> of(int pid);
};

} // namespace halvo::demo
