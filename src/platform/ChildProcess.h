#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace halvo {

/// A program and what it is started with.
struct Command {
    std::string program;
    std::vector<std::string> arguments;

    bool operator==(const Command&) const = default;
};

/// A helper program that was launched. Main thread. Dropping it neither ends the program nor waits:
/// its handlers fall silent, and the launcher takes up its end, so that no zombie stays. It may be
/// dropped by one of its own handlers.
class ChildProcess {
  public:
    virtual ~ChildProcess() = default;
    virtual std::int64_t processIdentifier() const = 0;
    virtual bool isRunning() const = 0;
    /// Asks the program to end; returns at once.
    virtual void terminate() = 0;
};

/// What a helper does, as it is heard on the main thread. May be empty.
struct ChildProcessHandlers {
    /// Some bytes of the program's standard output, cut anywhere.
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
    /// error's description when it cannot be launched. The child inherits no blocked signal and no
    /// descriptor. Main thread.
    virtual std::expected<std::unique_ptr<ChildProcess>, std::string>
    launch(const Command& command, ChildProcessHandlers handlers) = 0;

    /// Runs a program to its end with its output discarded; the exit status, or an error's
    /// description when it cannot be launched. Blocks: background threads only.
    virtual std::expected<int, std::string> run(const Command& command) = 0;
};

} // namespace halvo
