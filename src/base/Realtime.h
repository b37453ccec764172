#pragma once

/// Marks a function that runs on the render thread: no allocation, lock, log, exception or system
/// call. Stands behind the parameter list and `noexcept`. Compilers with function effects (clang 20
/// and newer) prove it; others take it as a note.
#if defined(__clang__) && __has_cpp_attribute(clang::nonblocking)
#define HALVO_REALTIME [[clang::nonblocking]]
#else
#define HALVO_REALTIME
#endif
