#pragma once

#include "platform/RingLayout.h"
#include "platform/SharedMemory.h"

#include <list>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace halvo {

/// One shared object that holds a ring, or nothing at all. The test plays the driver.
class FakeSharedMemory final : public SharedMemory {
  public:
    /// Makes a new object and notifies the watchers; existing mappings keep the previous one.
    /// `bytes` overrides the size that the header calls for.
    void createRing(std::uint32_t sampleRate, std::uint32_t channels, std::uint32_t capacity);
    void createObject(std::size_t bytes);
    void removeObject();
    /// Notifies the watchers of a change.
    void announceChange();

    RingHeader& header();
    std::span<float> samples();
    /// Writes frames as the driver does: samples first, then the index.
    void write(std::span<const float> interleaved);

    bool sizeFails = false;
    bool mapFails = false;
    int mapped = 0; ///< mappings alive
    int opened = 0; ///< descriptors open
    std::vector<std::string> openedNames;

    std::int32_t open(const char* name) override;
    std::int64_t size(std::int32_t descriptor) override;
    void* map(std::int32_t descriptor, std::int64_t size) override;
    void unmap(void* memory, std::int64_t size) override;
    void close(std::int32_t descriptor) override;
    bool isCurrent(const char* name, std::int32_t descriptor, const void* memory,
                   std::int64_t size) override;
    Subscription watch(const char* name, std::function<void()> changed) override;

  private:
    using Words = std::vector<std::uint64_t>; ///< keeps the object aligned as a mapping is

    struct Object {
        Words words;
        std::size_t bytes = 0;
    };
    std::shared_ptr<Object> object_;
    std::vector<std::shared_ptr<Object>> kept_;
    std::list<std::function<void()>> watchers_;
    std::int32_t nextDescriptor_ = 7;
};

} // namespace halvo
