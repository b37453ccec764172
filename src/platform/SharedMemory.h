#pragma once

#include "base/Subscription.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace halvo {

/// Named shared-memory objects that another process made. Main thread only.
class SharedMemory {
  public:
    virtual ~SharedMemory() = default;

    /// Opens an existing object for reading and writing; negative when it cannot be opened.
    virtual std::int32_t open(const char* name) = 0;
    /// The object's size in bytes, -1 when it cannot be read.
    virtual std::int64_t size(std::int32_t descriptor) = 0;
    /// Maps the first `size` bytes, shared, readable and writable; null on failure. If the object
    /// shrinks afterwards, the mapping reads as zeros from then on and writes to it are lost.
    virtual void* map(std::int32_t descriptor, std::int64_t size) = 0;
    virtual void unmap(void* memory, std::int64_t size) = 0;
    virtual void close(std::int32_t descriptor) = 0;

    /// Whether `descriptor`, mapped with `size` bytes at `memory`, is still the object of that
    /// name, at that size, and has not shrunk.
    virtual bool isCurrent(const char* name, std::int32_t descriptor, const void* memory,
                           std::int64_t size) = 0;
    /// Calls `changed` on the main thread whenever the object of that name appears, disappears, is
    /// resized or is marked as changed by its owner.
    virtual Subscription watch(const char* name, std::function<void()> changed) = 0;
};

} // namespace halvo
