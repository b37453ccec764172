#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace halvo {

/// A running helper program. Main thread. Destroying it ends the program and waits for it.
class ChildProcess {
  public:
    virtual ~ChildProcess() = default;
    virtual bool isRunning() const = 0;
    virtual void terminate() = 0;
};

class ChildProcessLauncher {
  public:
    /// Some bytes of the program's standard output, cut anywhere. Main thread.
    using OnOutput = std::function<void(const std::string& bytes)>;
    /// The program has ended. Main thread, once, after its last output.
    using OnExit = std::function<void(int status)>;

    virtual ~ChildProcessLauncher() = default;

    /// Starts a program; null when it cannot be launched. The child inherits no blocked signal.
    virtual std::unique_ptr<ChildProcess> launch(const std::string& program,
                                                 const std::vector<std::string>& arguments,
                                                 OnOutput onOutput, OnExit onExit) = 0;
};

} // namespace halvo
