#pragma once

#include "platform/SharedMemory.h"

#include <string>

namespace halvo {

/// POSIX shared memory but for the watching, which each system does its own way. Main thread only.
class PosixSharedMemory : public SharedMemory {
  public:
    std::int32_t open(const char* name) override;
    std::int64_t size(std::int32_t descriptor) override;
    void* map(std::int32_t descriptor, std::int64_t size) override;
    void unmap(void* memory, std::int64_t size) override;
    void close(std::int32_t descriptor) override;

    /// Where the system does not tell two objects apart, rings are told by what stands in them.
    bool isCurrent(const char* name, std::int32_t descriptor, const void* memory,
                   std::int64_t size) override;

  protected:
    /// What the system calls the object of that name.
    virtual std::string systemName(const std::string& name) const = 0;
};

} // namespace halvo
