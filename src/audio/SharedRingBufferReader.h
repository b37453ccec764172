#pragma once

#include "base/Realtime.h"
#include "platform/RingLayout.h"

#include <cstdint>
#include <optional>

namespace halvo {

class SharedMemory;

/// The reader's side of the ring that the virtual device's driver fills. `connect` and
/// `disconnect` on the main thread while no render callback runs; `readFrames` on the render
/// thread.
class SharedRingBufferReader {
  public:
    /// What the driver says about its samples.
    struct Format {
        std::uint32_t sampleRate = 0; ///< frames per second
        std::uint32_t channelCount = 0;
        bool operator==(const Format&) const = default;
    };

    explicit SharedRingBufferReader(SharedMemory& memory) : memory_(memory) {}
    ~SharedRingBufferReader() { disconnect(); }
    SharedRingBufferReader(const SharedRingBufferReader&) = delete;
    SharedRingBufferReader& operator=(const SharedRingBufferReader&) = delete;

    /// Maps the driver's object and starts at "now", so that nothing old is played. True when a
    /// mapping exists afterwards; does nothing when there is one already.
    bool connect();
    void disconnect();
    bool isConnected() const { return mappedMemory != nullptr; }
    /// Whether the mapped object is still the one that the name stands for.
    bool isCurrent() const;

    /// Nothing without a mapping, or while the header makes no sense. Any thread.
    std::optional<Format> format() const noexcept HALVO_REALTIME;

    /// Copies at most `maxFrames` frames of `channelCount` interleaved samples to `destination`,
    /// moves the shared read index on and returns the number of frames. A header that is not
    /// ready, that claims more than the mapping holds or that has another channel count gives 0
    /// and leaves both indices alone. A negative `maxFrames` ends the process.
    std::int64_t readFrames(float* destination, std::int64_t maxFrames,
                            std::uint32_t channelCount) noexcept HALVO_REALTIME;

    std::int32_t fd = -1;         ///< the object's descriptor, -1 when closed
    void* mappedMemory = nullptr; ///< start of the mapping
    std::int64_t mappedSize = 0;  ///< bytes

  private:
    RingHeader& header() const noexcept HALVO_REALTIME;
    /// The capacity in frames if the header fits the mapping, else 0.
    std::uint64_t usableCapacity(std::uint32_t channelCount) const noexcept HALVO_REALTIME;
    const float* samples() const noexcept HALVO_REALTIME;

    SharedMemory& memory_;
};

} // namespace halvo
