#pragma once

/// Marks a function that runs on the render thread: no allocation, lock, log, exception or system
/// call. Follows the parameter list and `noexcept`. Compilers with function effects (clang 20 and
/// newer) check it; others ignore it.
#if defined(__clang__) && __has_cpp_attribute(clang::nonblocking)
#define HALVO_REALTIME [[clang::nonblocking]]
#else
#define HALVO_REALTIME
#endif
