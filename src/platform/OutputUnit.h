#pragma once

#include "base/Realtime.h"
#include "platform/AudioHardware.h"

#include <cstdint>
#include <memory>

namespace halvo {

/// 32-bit float, packed, interleaved.
struct StreamFormat {
    double sampleRate = 0;      ///< Hz
    std::uint32_t channels = 0; ///< samples per frame

    std::uint32_t bytesPerFrame() const { return channels * 4; }
    bool operator==(const StreamFormat&) const = default;
};

/// One interleaved buffer of a render cycle: `channels` samples for each frame.
struct RenderBuffer {
    std::uint32_t channels = 0;
    std::uint32_t byteSize = 0;
    float* data = nullptr;
};

struct RenderBufferList {
    std::uint32_t count = 0;
    RenderBuffer* buffers = nullptr;
};

/// When the first frame of a render cycle is played, in frames since the unit started.
struct RenderTimestamp {
    double sampleTime = 0;
};

using OSStatus = std::int32_t;
constexpr OSStatus kNoErr = 0;

/// Fills the buffers with `inNumberFrames` frames. Render thread, real-time safe.
using RenderCallback = OSStatus (*)(void* inRefCon, std::uint32_t* ioActionFlags,
                                    const RenderTimestamp* inTimestamp, std::uint32_t inBusNumber,
                                    std::uint32_t inNumberFrames,
                                    RenderBufferList* ioData) noexcept HALVO_REALTIME;

/// A stream to one output device that pulls its sound from a render callback. Main thread.
///
/// Without a device it plays to the system's default output. Once `stop` has returned, and once
/// the unit is destroyed, the callback does not run.
class OutputUnit {
  public:
    virtual ~OutputUnit() = default;

    virtual bool setDevice(AudioDeviceID device) = 0;
    virtual bool setStreamFormat(const StreamFormat& format) = 0;
    /// `refCon` must outlive the unit.
    virtual bool setRenderCallback(RenderCallback callback, void* refCon) = 0;
    virtual bool initialize() = 0;
    virtual bool start() = 0;
    virtual bool stop() = 0;
};

class OutputUnitFactory {
  public:
    virtual ~OutputUnitFactory() = default;

    /// A new, stopped unit, or null when the system has none. Main thread.
    virtual std::unique_ptr<OutputUnit> makeOutputUnit() = 0;
};

} // namespace halvo
