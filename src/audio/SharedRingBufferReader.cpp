#include "audio/SharedRingBufferReader.h"

#include "base/CheckedArithmetic.h"
#include "platform/SharedMemory.h"

#include <algorithm>
#include <cstring>

namespace halvo {

namespace {

// Beyond these a header is damaged, whatever the size of its object.
constexpr std::uint32_t kMaximumChannels = 64;
constexpr std::uint32_t kMaximumSampleRate = 1'000'000;

} // namespace

bool SharedRingBufferReader::connect() {
    if (isConnected()) return true;
    fd = memory_.open(kRingName);
    if (fd < 0) return false;
    const auto size = memory_.size(fd);
    void* mapping = nullptr;
    if (size >= 1) {
        mappedSize = size;
        mapping = memory_.map(fd, size);
    }
    if (!mapping) {
        memory_.close(fd);
        fd = -1;
        return false;
    }
    mappedMemory = mapping;
    if (mappedSize >= static_cast<std::int64_t>(kRingHeaderSize)) {
        storeShared(header().readIndex, loadShared(header().writeIndex));
    }
    return true;
}

void SharedRingBufferReader::disconnect() {
    if (mappedMemory) {
        memory_.unmap(mappedMemory, mappedSize);
        mappedMemory = nullptr;
    }
    if (fd >= 0) {
        memory_.close(fd);
        fd = -1;
    }
}

bool SharedRingBufferReader::isCurrent() const {
    return isConnected() && memory_.isCurrent(kRingName, fd, mappedMemory, mappedSize);
}

std::optional<SharedRingBufferReader::Format>
SharedRingBufferReader::format() const noexcept HALVO_REALTIME {
    if (!mappedMemory || mappedSize < static_cast<std::int64_t>(kRingHeaderSize)) {
        return std::nullopt;
    }
    const Format format{loadShared(header().sampleRate), loadShared(header().channelCount)};
    if (format.sampleRate == 0 || format.sampleRate > kMaximumSampleRate) return std::nullopt;
    if (usableCapacity(format.channelCount) == 0) return std::nullopt;
    return format;
}

std::int64_t
SharedRingBufferReader::readFrames(float* destination, std::int64_t maxFrames,
                                   std::uint32_t channelCount) noexcept HALVO_REALTIME {
    const auto limit = static_cast<std::uint64_t>(checkedCount(maxFrames));
    const std::uint64_t capacity = usableCapacity(channelCount);
    if (capacity == 0 || loadShared(header().channelCount) != channelCount) return 0;

    const std::uint64_t written = loadShared(header().writeIndex);
    std::uint64_t read = loadShared(header().readIndex);
    if (written < read) { // the driver has restarted its counter
        storeShared(header().readIndex, written);
        return 0;
    }
    if (written - read > capacity) {
        // By design half a ring, not the newest frames: a cushion for the next cycles.
        read = written - capacity / 2;
        storeShared(header().readIndex, read);
    }
    const std::uint64_t count = std::min(written - read, limit);
    if (count == 0) return 0;

    const std::uint64_t position = read % capacity;
    const std::uint64_t first = std::min(count, capacity - position);
    const std::uint64_t offset = checkedMultiply<std::uint64_t>(position, channelCount);
    const std::uint64_t frameBytes = checkedMultiply<std::uint64_t>(channelCount, sizeof(float));
    std::memcpy(destination, samples() + offset, checkedMultiply(first, frameBytes));
    if (count > first) {
        std::memcpy(destination + checkedMultiply<std::uint64_t>(first, channelCount), samples(),
                    checkedMultiply(count - first, frameBytes));
    }
    storeShared(header().readIndex, checkedAdd(read, count));
    return static_cast<std::int64_t>(count);
}

RingHeader& SharedRingBufferReader::header() const noexcept HALVO_REALTIME {
    return *static_cast<RingHeader*>(mappedMemory);
}

std::uint64_t
SharedRingBufferReader::usableCapacity(std::uint32_t channelCount) const noexcept HALVO_REALTIME {
    if (!mappedMemory || mappedSize < static_cast<std::int64_t>(kRingHeaderSize)) return 0;
    if (channelCount == 0 || channelCount > kMaximumChannels) return 0;
    const std::uint64_t capacity = loadShared(header().capacity);
    const auto room = static_cast<std::uint64_t>(mappedSize) - kRingHeaderSize;
    return capacity <= room / (channelCount * sizeof(float)) ? capacity : 0;
}

const float* SharedRingBufferReader::samples() const noexcept HALVO_REALTIME {
    return reinterpret_cast<const float*>(static_cast<const char*>(mappedMemory) + kRingHeaderSize);
}

} // namespace halvo
