#pragma once

#include "platform/SharedMemory.h"

#include <string>

namespace halvo {

/// POSIX shared memory; watching an object is left to each system. Main thread only.
class PosixSharedMemory : public SharedMemory {
  public:
    std::int32_t open(const char* name) override;
    std::int64_t size(std::int32_t descriptor) override;
    void* map(std::int32_t descriptor, std::int64_t size) override;
    void unmap(void* memory, std::int64_t size) override;
    void close(std::int32_t descriptor) override;

    /// Where the system gives objects no inode numbers, compares the contents of the rings.
    bool isCurrent(const char* name, std::int32_t descriptor, const void* memory,
                   std::int64_t size) override;

  protected:
    /// The name under which the system knows the object.
    virtual std::string systemName(const std::string& name) const = 0;
};

} // namespace halvo
