#pragma once

#include "platform/ChildProcess.h"

#include <chrono>
#include <expected>
#include <optional>
#include <string>

namespace halvo::PatientProcess {

struct Result {
    int status = 0;     ///< exit status, 128 + n after signal n
    std::string output; ///< both streams in the order of arrival, UTF-8; empty when it was none
};

/// Runs a program, looked up in PATH unless it has a slash, to its end, reading what it says
/// meanwhile. Blocks the calling thread; one that takes longer than `longest` is killed. An error's
/// description when it cannot be started. The child has no blocked signal and nothing to read.
std::expected<Result, std::string> run(const Command& command,
                                       std::optional<std::chrono::milliseconds> longest);

} // namespace halvo::PatientProcess
