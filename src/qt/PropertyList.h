#pragma once

#include <optional>
#include <string>

namespace halvo {

/// The text under `key` at the top level of a property list, XML or binary. Nothing when the list
/// is not well formed, its top is no dictionary, or the key is missing or holds something else. Any
/// thread.
std::optional<std::string> propertyListString(const std::string& list, const std::string& key);

} // namespace halvo
