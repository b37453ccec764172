#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace halvo {

/// A program with its arguments and environment.
struct Command {
    std::string program;
    std::vector<std::string> arguments;

    bool operator==(const Command&) const = default;
};

/// A running helper program. Main thread. Destroying it neither ends the program nor waits for it:
/// the handlers are no longer called, and the launcher reaps the process later. One of its own
/// handlers may destroy it.
class ChildProcess {
  public:
    virtual ~ChildProcess() = default;
    virtual std::int64_t processIdentifier() const = 0;
    virtual bool isRunning() const = 0;
    /// Asks the program to end; returns at once.
    virtual void terminate() = 0;
};

/// Events of a helper, on the main thread. May be empty.
struct ChildProcessHandlers {
    /// Bytes of the program's standard output, split anywhere.
    std::function<void(const std::string& bytes)> onOutput;
    /// The program has closed its standard output; once, after its last bytes.
    std::function<void()> onEndOfOutput;
    /// The program has ended; once.
    std::function<void(int status)> onExit;
};

class ChildProcessLauncher {
  public:
    virtual ~ChildProcessLauncher() = default;

    /// Starts a program with its standard output on a pipe and its standard error discarded; an
    /// error's description when it cannot be launched. The child inherits no blocked signals and no
    /// descriptors. Main thread.
    virtual std::expected<std::unique_ptr<ChildProcess>, std::string>
    launch(const Command& command, ChildProcessHandlers handlers) = 0;

    /// Runs a program to its end with its output discarded; the exit status, or an error's
    /// description when it cannot be launched. Blocks: background threads only.
    virtual std::expected<int, std::string> run(const Command& command) = 0;
};

} // namespace halvo
