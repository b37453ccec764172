#pragma once

#include "platform/ChildProcess.h"

namespace halvo {

/// Child processes over the toolkit, where the system has nothing better. Each one is reaped by the
/// main loop; programs that still run when it ends are left to themselves.
class QtChildProcessLauncher final : public ChildProcessLauncher {
  public:
    /// The child's standard output breaks when its handle goes; that is how it may notice.
    std::expected<std::unique_ptr<ChildProcess>, std::string>
    launch(const Command& command, ChildProcessHandlers handlers) override;
    /// A program that has not ended after ten seconds is killed. A status of 128 + n: signal n.
    std::expected<int, std::string> run(const Command& command) override;
};

} // namespace halvo
