#pragma once

#include <string>

namespace halvo::tools {

/// printf into a string; cut off after 159 bytes, a line of the terminal at most. Any thread.
[[gnu::format(printf, 1, 2)]] std::string formattedText(const char* format, ...);

} // namespace halvo::tools
