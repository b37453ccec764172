#pragma once

#include "platform/OutputUnit.h"
#include "session/Recorder.h"

#include <atomic>
#include <cstdint>
#include <optional>

namespace halvo {

/// A stereo sound in which every frame encodes its own number, so that any part of it can be
/// located and a single wrong bit is detected.
class TestSignal {
  public:
    static float left(std::uint64_t frame);
    static float right(std::uint64_t frame);
    /// The number of the frame that starts with this left sample; nothing for silence or damage.
    static std::optional<std::uint64_t> frameOf(float left);

    /// What a recording holds of the signal.
    struct Match {
        std::size_t exactFrames = 0; ///< frames that are the signal's, bit for bit
        std::size_t silentFrames = 0;
        std::size_t wrongFrames = 0;
        std::size_t jumps = 0; ///< places where a frame does not follow the one before
    };
    static Match match(const session::Recording& recording);

    static OSStatus render(void* self, std::uint32_t* flags, const RenderTimestamp* timestamp,
                           std::uint32_t bus, std::uint32_t frames,
                           RenderBufferList* list) noexcept HALVO_REALTIME;

    std::atomic<std::uint64_t> next{1}; ///< the frame to be rendered next
    std::atomic<bool> inside{false};    ///< whether the callback runs
    std::atomic<bool> held{false};      ///< keeps the callback from returning
};

} // namespace halvo
