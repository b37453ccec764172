#include "Progress.h"

#include <chrono>
#include <cstdarg>
#include <cstdio>

namespace halvo::demo {

void progress(const char* format, ...) {
    using Clock = std::chrono::steady_clock;
    static const Clock::time_point start = Clock::now();
    std::printf("%5.1f s  ", std::chrono::duration<double>(Clock::now() - start).count());
    std::va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
    std::printf("\n");
    std::fflush(stdout);
}

} // namespace halvo::demo
