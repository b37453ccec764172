#pragma once

#include <cstddef>

namespace halvo {

/// Keeps a process alive when a shared object shrinks underneath its mapping, which the system
/// answers with SIGBUS at the next access. The first access to a guarded range that fails turns the
/// whole range into private zero pages and marks it lost; a SIGBUS anywhere else goes to whoever
/// handled it before. One handler for the process, installed with the first range.
class MappingGuard {
  public:
    /// Guards a mapping of `size` bytes; false when the table is full. Any thread.
    static bool add(const void* start, std::size_t size);
    /// Forgets the range that begins at `start`; nobody may access it any more. Before the munmap.
    /// Any thread.
    static void remove(const void* start);
    /// Whether the range that begins at `start` was replaced by zero pages. Any thread, real-time
    /// safe.
    static bool isLost(const void* start) noexcept;
};

} // namespace halvo
