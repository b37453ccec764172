#pragma once

#include "posix/FileDescriptor.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <utility>

namespace halvo {

/// Held by the one process that may change the session's devices: the application while it runs,
/// or who gives back what a dead one left. Ends with the object, or with the process however that
/// ends. Any thread.
class SessionLock {
  public:
    /// In the session's own directory, or beside the settings where there is none.
    static std::filesystem::path standardPath();

    /// Nothing when another process held it all the time. Where no such file can be made nobody
    /// else can have one either: that counts as taken.
    static std::optional<SessionLock> take(const std::filesystem::path& path,
                                           std::chrono::milliseconds longest);

  private:
    explicit SessionLock(FileDescriptor file) : file_(std::move(file)) {}

    FileDescriptor file_;
};

} // namespace halvo
