#pragma once

#include <string_view>

namespace halvo {

/// Orders texts with runs of digits compared as numbers: "1.10" comes after "1.9". Less than, equal
/// to or greater than 0 as `a` comes before, with or after `b`. Any thread.
int compareVersions(std::string_view a, std::string_view b);

} // namespace halvo
