#pragma once

#include "platform/ChildProcess.h"
#include "posix/FileDescriptor.h"

#include <chrono>
#include <expected>
#include <optional>
#include <string>
#include <sys/types.h>

namespace halvo {

/// A program started without the toolkit, for programs that do not link it, and followed. It runs
/// on when this is destroyed; only `wait` reaps it. One thread at a time.
class SpawnedChild {
  public:
    enum class Output { pipe, discarded };

    /// Returns once the program runs; an error's description when it cannot be executed.
    static std::expected<SpawnedChild, std::string> start(const Command& command, Output output);

    pid_t pid() const { return pid_; }
    /// Readable once the program has ended.
    int processDescriptor() const { return process_.get(); }
    /// The reading end of its standard output; never blocks. None when that is discarded.
    FileDescriptor takeOutput() { return std::move(output_); }

    bool signal(int number) const;
    /// The exit status, 128 + n after signal n, if the program ends in time; it is reaped then.
    std::optional<int> wait(std::chrono::milliseconds deadline);

  private:
    SpawnedChild(pid_t pid, FileDescriptor process, FileDescriptor output)
        : pid_(pid), process_(std::move(process)), output_(std::move(output)) {}

    pid_t pid_;
    FileDescriptor process_;
    FileDescriptor output_;
};

} // namespace halvo
