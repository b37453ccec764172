#pragma once

#include <vector>

namespace halvo::bench {

/// The smallest of the values that at least `share` (above 0, up to 1) of all do not exceed; 0 when
/// there are none.
double percentile(std::vector<double> values, double share);

/// The middle value, or the mean of the two in the middle; 0 when there are none.
double median(std::vector<double> values);

} // namespace halvo::bench
