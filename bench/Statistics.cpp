#include "Statistics.h"

#include <algorithm>
#include <cmath>

namespace halvo::bench {

double percentile(std::vector<double> values, double share) {
    if (values.empty()) return 0;
    std::ranges::sort(values);
    const auto count = static_cast<double>(values.size());
    const double rank = std::clamp(std::ceil(share * count), 1.0, count);
    return values[static_cast<std::size_t>(rank) - 1];
}

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::ranges::sort(values);
    const std::size_t middle = values.size() / 2;
    if (values.size() % 2 == 1) return values[middle];
    return (values[middle - 1] + values[middle]) / 2;
}

} // namespace halvo::bench
