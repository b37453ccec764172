#pragma once

#include "posix/FileDescriptor.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <utility>

namespace halvo {

/// Held by the one process that may change the session's devices: the running application, or the
/// guard that restores them after a crash. Released with the object, or when the process ends in
/// any way. Any thread.
class SessionLock {
  public:
    /// Nothing when another process holds it all that time. Where the file cannot be made no other
    /// process can have it either, so the lock counts as taken.
    static std::optional<SessionLock> take(const std::filesystem::path& path,
                                           std::chrono::milliseconds longest);

  private:
    explicit SessionLock(FileDescriptor file) : file_(std::move(file)) {}

    FileDescriptor file_;
};

} // namespace halvo
