#pragma once

#include "platform/SharedMemory.h"
#include "platform/posix/FileDescriptor.h"

#include <memory>
#include <string>
#include <vector>

class QSocketNotifier;

namespace halvo {

/// POSIX shared memory. The ring goes by the name that this user's driver uses. Main thread only.
class LinuxSharedMemory final : public SharedMemory {
  public:
    LinuxSharedMemory();
    ~LinuxSharedMemory() override;

    std::int32_t open(const char* name) override;
    std::int64_t size(std::int32_t descriptor) override;
    void* map(std::int32_t descriptor, std::int64_t size) override;
    void unmap(void* memory, std::int64_t size) override;
    void close(std::int32_t descriptor) override;

    bool isCurrent(const char* name, std::int32_t descriptor, const void* memory,
                   std::int64_t size) override;
    /// One call for all that happened since the main loop's last turn.
    Subscription watch(const char* name, std::function<void()> changed) override;

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
