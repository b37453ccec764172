#pragma once

#include "platform/ChildProcess.h"
#include "posix/FileDescriptor.h"

#include <chrono>
#include <expected>
#include <optional>
#include <string>
#include <sys/types.h>

namespace halvo {

/// A program that was started with no descriptors but the standard ones and default signals. Not
/// reaped by itself. One thread at a time.
class SpawnedChild {
  public:
    enum class Output { pipe, discarded };
    enum class Session { callers, own };

    /// What it has in common with this process.
    struct Ties {
        int input = -1; ///< a descriptor for its standard input; -1: nothing to read
        /// Its own, with a process group of its own: no terminal's signal reaches it, nor the one
        /// for a group that is stopped when its last tie to the rest goes.
        Session session = Session::callers;
    };

    /// Returns once the program is executed; an error's description when it cannot be.
    static std::expected<SpawnedChild, std::string> start(const Command& command, Output output,
                                                          Ties ties = {-1, Session::callers});

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
