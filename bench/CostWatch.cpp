#include "CostWatch.h"

#include "Statistics.h"
#include "demo/ProcessUsage.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace halvo::bench {

Cost Cost::operator+(const Cost& other) const {
    return {cpuPercent + other.cpuPercent, wakeupsPerSecond + other.wakeupsPerSecond,
            rssMiB + other.rssMiB};
}

nlohmann::ordered_json json(const Cost& cost) {
    return {{"cpuPercent", cost.cpuPercent},
            {"wakeupsPerSecond", cost.wakeupsPerSecond},
            {"rssMiB", cost.rssMiB}};
}

Cost medianOf(const std::vector<Cost>& costs) {
    const auto of = [&](double Cost::* figure) {
        std::vector<double> values;
        for (const Cost& cost : costs)
            values.push_back(cost.*figure);
        return median(std::move(values));
    };
    return {of(&Cost::cpuPercent), of(&Cost::wakeupsPerSecond), of(&Cost::rssMiB)};
}

CostWatch::CostWatch(int pid) : pid_(pid), before_(TaskUsage::of(pid)), begin_(Clock::now()) {}

std::optional<Cost> CostWatch::finish() const {
    const std::chrono::duration<double> time = Clock::now() - begin_;
    const auto after = TaskUsage::of(pid_);
    const auto memory = demo::ProcessUsage::of(pid_);
    if (!before_ || !after || !memory) return std::nullopt;
    return Cost{.cpuPercent = 100 * after->cpuSecondsSince(*before_) / time.count(),
                .wakeupsPerSecond =
                    static_cast<double>(after->wakeupsSince(*before_)) / time.count(),
                .rssMiB = memory->residentMiB};
}

} // namespace halvo::bench
