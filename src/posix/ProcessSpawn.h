#pragma once

#include "platform/ChildProcess.h"

#include <expected>
#include <optional>
#include <string>
#include <sys/types.h>

namespace halvo::ProcessSpawn {

enum class Session { callers, own };

/// What the program shares with this process.
struct Ties {
    int input = -1;  ///< a descriptor for its standard input; -1: nothing to read
    int output = -1; ///< a descriptor for its standard output; -1: discarded
    /// `own` gives it a process group of its own, too: neither a terminal's signals reach it nor
    /// the SIGHUP for an orphaned group.
    Session session = Session::callers;
};

/// Starts a program without the toolkit: its number, or an error's description when it cannot be
/// executed. It inherits the standard descriptors alone and has default signal handling. The caller
/// reaps it. Any thread.
std::expected<pid_t, std::string> start(const Command& command, Ties ties);

/// The number is free again once this is true: the program has ended, and is reaped. Does not wait.
bool reap(pid_t program);

} // namespace halvo::ProcessSpawn
