#include "fake/FakeSharedMemory.h"

#include <algorithm>

namespace halvo {

void FakeSharedMemory::createRing(std::uint32_t sampleRate, std::uint32_t channels,
                                  std::uint32_t capacity) {
    const std::size_t bytes = kRingHeaderSize + std::size_t{capacity} * channels * sizeof(float);
    object_ = std::make_shared<Object>(Object{Words(bytes / 8 + 1), bytes});
    kept_.push_back(object_);
    header().sampleRate = sampleRate;
    header().channelCount = channels;
    header().capacity = capacity;
    announceChange();
}

void FakeSharedMemory::createObject(std::size_t bytes) {
    object_ = std::make_shared<Object>(Object{Words(bytes / 8 + 1), bytes});
    kept_.push_back(object_);
    announceChange();
}

void FakeSharedMemory::removeObject() {
    object_.reset();
    announceChange();
}

void FakeSharedMemory::announceChange() {
    for (const auto& watcher : std::list(watchers_))
        watcher();
}

RingHeader& FakeSharedMemory::header() {
    return *reinterpret_cast<RingHeader*>(object_->words.data());
}

std::span<float> FakeSharedMemory::samples() {
    auto* bytes = reinterpret_cast<char*>(object_->words.data());
    return {reinterpret_cast<float*>(bytes + kRingHeaderSize),
            (object_->bytes - kRingHeaderSize) / sizeof(float)};
}

void FakeSharedMemory::write(std::span<const float> interleaved) {
    auto& ring = header();
    const std::size_t frames = interleaved.size() / ring.channelCount;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const auto position = (ring.writeIndex + frame) % ring.capacity;
        for (std::size_t channel = 0; channel < ring.channelCount; ++channel) {
            samples()[position * ring.channelCount + channel] =
                interleaved[frame * ring.channelCount + channel];
        }
    }
    storeShared(ring.writeIndex, ring.writeIndex + frames);
}

std::int32_t FakeSharedMemory::open(const char* name) {
    openedNames.emplace_back(name);
    if (!object_) return -1;
    ++opened;
    return nextDescriptor_++;
}

std::int64_t FakeSharedMemory::size(std::int32_t) {
    return sizeFails ? -1 : static_cast<std::int64_t>(object_->bytes);
}

void* FakeSharedMemory::map(std::int32_t, std::int64_t) {
    if (mapFails) return nullptr;
    ++mapped;
    return object_->words.data();
}

void FakeSharedMemory::unmap(void*, std::int64_t) {
    --mapped;
}

void FakeSharedMemory::close(std::int32_t) {
    --opened;
}

bool FakeSharedMemory::isCurrent(const char*, std::int32_t, const void* memory, std::int64_t size) {
    return object_ && memory == object_->words.data() &&
           size == static_cast<std::int64_t>(object_->bytes);
}

Subscription FakeSharedMemory::watch(const char*, std::function<void()> changed) {
    watchers_.push_back(std::move(changed));
    // List iterators stay valid while other elements are added and removed.
    return Subscription(
        [this, position = std::prev(watchers_.end())] { watchers_.erase(position); });
}

} // namespace halvo
