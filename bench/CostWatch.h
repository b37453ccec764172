#pragma once

#include "TaskUsage.h"

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <optional>
#include <vector>

namespace halvo::bench {

/// What a program takes over a window of time.
struct Cost {
    double cpuPercent = 0; ///< of one core
    double wakeupsPerSecond = 0;
    double rssMiB = 0; ///< at the window's end

    Cost operator+(const Cost& other) const;
};

nlohmann::ordered_json json(const Cost& cost);
/// The median of each figure for itself.
Cost medianOf(const std::vector<Cost>& costs);

/// Watches a program, from its making until `finish`.
class CostWatch {
  public:
    explicit CostWatch(int pid);

    /// Nothing when the program has ended.
    std::optional<Cost> finish() const;

  private:
    using Clock = std::chrono::steady_clock;

    int pid_;
    std::optional<TaskUsage> before_;
    Clock::time_point begin_;
};

} // namespace halvo::bench
