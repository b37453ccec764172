#include "support/FormattedText.h"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace halvo::tools {

std::string formattedText(const char* format, ...) {
    std::array<char, 160> line{};
    std::va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(line.data(), line.size(), format, arguments); // cut off at worst
    va_end(arguments);
    return line.data();
}

} // namespace halvo::tools
