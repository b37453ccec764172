#include "audio/Wavefront.h"

namespace halvo {

namespace {

/// Four sections a vector. The only file that may use AVX2: nothing else of it may be shared.
struct EightLanes {
    static constexpr std::size_t kSlots = 4;
    using Floats = float __attribute__((vector_size(32)));
    using Integers = std::int32_t __attribute__((vector_size(32)));
    using Frames = double __attribute__((vector_size(32))); // left and right, moved as one

    template <typename Vector, typename F> static Vector perSlot(F f) {
        return Vector{f(0), f(0), f(1), f(1), f(2), f(2), f(3), f(3)};
    }
    static Frames movedUp(Frames row, double frame) {
        return __builtin_shufflevector(Frames{frame, frame, frame, frame}, row, 0, 4, 5, 6);
    }
};

} // namespace

void wavefrontOfEightLanes(float* frames, std::int64_t frameCount,
                           const BiquadCoefficients* coefficients,
                           WavefrontMemory& memory) noexcept HALVO_REALTIME {
    Wavefront<EightLanes>(coefficients).process(frames, frameCount, memory);
}

} // namespace halvo
