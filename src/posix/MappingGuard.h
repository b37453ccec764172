#pragma once

#include <cstddef>

namespace halvo {

/// Keeps the process alive when a shared object shrinks under its mapping, where the next access
/// would raise SIGBUS. The first failing access replaces the whole guarded range by private zero
/// pages and marks it lost. A SIGBUS anywhere else goes to the previous handler. One handler per
/// process, installed with the first range.
class MappingGuard {
  public:
    /// Guards a mapping of `size` bytes; false when the table is full. Any thread.
    static bool add(const void* start, std::size_t size);
    /// Forgets the range that begins at `start`. Call it before munmap, after the last access. Any
    /// thread.
    static void remove(const void* start);
    /// Whether the range that begins at `start` has been replaced by zero pages. Any thread,
    /// real-time safe.
    static bool isLost(const void* start) noexcept;
};

} // namespace halvo
