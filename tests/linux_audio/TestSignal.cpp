#include "linux_audio/TestSignal.h"

namespace halvo {

namespace {
constexpr float kScale = 1.0F / 16'777'216; // 24 bits of a frame's number are exact
} // namespace

float TestSignal::left(std::uint64_t frame) {
    return static_cast<float>(frame) * kScale;
}

float TestSignal::right(std::uint64_t frame) {
    auto bits = static_cast<std::uint32_t>(frame) * 2'654'435'761U;
    bits ^= bits >> 15;
    return static_cast<float>(bits & 0xFFFFFFU) * (2 * kScale) - 1.0F;
}

std::optional<std::uint64_t> TestSignal::frameOf(float sample) {
    const float frame = sample / kScale;
    const auto number = static_cast<std::uint64_t>(frame > 0 ? frame : 0);
    if (number == 0 || left(number) != sample) return std::nullopt;
    return number;
}

TestSignal::Match TestSignal::match(const session::Recording& recording) {
    Match result;
    std::optional<std::uint64_t> last;
    for (std::size_t i = 0; i < recording.frames(); ++i) {
        const float leftSample = recording.samples[2 * i];
        const float rightSample = recording.samples[2 * i + 1];
        const auto frame = frameOf(leftSample);
        if (leftSample == 0 && rightSample == 0) {
            ++result.silentFrames;
        } else if (!frame || right(*frame) != rightSample) {
            ++result.wrongFrames;
        } else {
            ++result.exactFrames;
            if (last && *frame != *last + 1) ++result.jumps;
        }
        last = frame;
    }
    return result;
}

OSStatus TestSignal::render(void* self, std::uint32_t*, const RenderTimestamp*, std::uint32_t,
                            std::uint32_t frames, RenderBufferList* list) noexcept HALVO_REALTIME {
    auto& signal = *static_cast<TestSignal*>(self);
    signal.inside = true;
    float* samples = list->buffers[0].data;
    std::uint64_t frame = signal.next;
    for (std::uint32_t i = 0; i < frames; ++i, ++frame) {
        *samples++ = left(frame);
        *samples++ = right(frame);
    }
    signal.next = frame;
    while (signal.held)
        continue;
    signal.inside = false;
    return kNoErr;
}

} // namespace halvo
