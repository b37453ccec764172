#pragma once

#include "platform/ChildProcess.h"

#include <memory>
#include <set>

namespace halvo {

class WatchedProcess;

/// Child processes followed by descriptors on the main loop; nothing waits for a child, and every
/// one is reaped. Programs that still run when this goes are left to themselves.
class LinuxChildProcessLauncher final : public ChildProcessLauncher {
  public:
    /// The child's standard output breaks when its handle goes; that is how it may notice.
    std::expected<std::unique_ptr<ChildProcess>, std::string>
    launch(const Command& command, ChildProcessHandlers handlers) override;
    /// A program that has not ended after ten seconds is killed. A status of 128 + n: signal n.
    std::expected<int, std::string> run(const Command& command) override;

  private:
    using Running = std::set<std::shared_ptr<WatchedProcess>>;

    std::shared_ptr<Running> running_ = std::make_shared<Running>();
};

} // namespace halvo
