#pragma once

#include "platform/ChildProcess.h"

#include <chrono>
#include <expected>
#include <optional>
#include <string>

namespace halvo {

/// The application's helper programs, over QProcess. The main loop reaps each one; a program that
/// still runs when the loop ends runs on.
class QtChildProcessLauncher final : public ChildProcessLauncher {
  public:
    /// The child's standard output breaks when its handle goes; that is how it may notice.
    std::expected<std::unique_ptr<ChildProcess>, std::string>
    launch(const Command& command, ChildProcessHandlers handlers) override;
    /// A program that has not ended after ten seconds is killed. A status of 128 + n: signal n.
    std::expected<int, std::string> run(const Command& command) override;
};

struct ProcessResult {
    int status = 0;     ///< exit status, 128 + n after signal n
    std::string output; ///< both streams in the order of arrival; empty when it is not UTF-8
};

/// Runs a program, looked up in PATH unless its name has a slash, until it ends. It has an empty
/// standard input, no blocked signal and no descriptor of this process. Blocks the calling thread;
/// a program that takes longer than `longest` is killed. An error's description when it cannot be
/// started.
std::expected<ProcessResult, std::string>
runProcess(const Command& command, std::optional<std::chrono::milliseconds> longest);

} // namespace halvo
