#pragma once

namespace halvo::demo {

/// Prints a line of at most 80 columns with the seconds since the first one. As printf, without the
/// end of line.
[[gnu::format(printf, 1, 2)]] void progress(const char* format, ...);

} // namespace halvo::demo
