#pragma once

#include "posix/FileDescriptor.h"
#include "posix/PosixSharedMemory.h"

#include <memory>
#include <string>
#include <vector>

class QSocketNotifier;

namespace halvo {

/// POSIX shared memory. The ring has the name that this user's driver uses. Main thread only.
class LinuxSharedMemory final : public PosixSharedMemory {
  public:
    LinuxSharedMemory();
    ~LinuxSharedMemory() override;

    /// One call for all changes since the last iteration of the main loop.
    Subscription watch(const char* name, std::function<void()> changed) override;

  protected:
    std::string systemName(const std::string& name) const override;

  private:
    struct Watcher;
    using Watchers = std::vector<std::shared_ptr<Watcher>>;

    bool startWatching();
    void readEvents();

    std::shared_ptr<Watchers> watchers_;
    FileDescriptor events_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace halvo
