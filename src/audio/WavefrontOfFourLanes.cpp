#include "audio/Wavefront.h"

namespace halvo {

namespace {

/// Two sections a vector: what every processor has.
struct FourLanes {
    static constexpr std::size_t kSlots = 2;
    using Floats = float __attribute__((vector_size(16)));
    using Integers = std::int32_t __attribute__((vector_size(16)));
    using Frames = double __attribute__((vector_size(16))); // left and right, moved as one

    template <typename Vector, typename F> static Vector perSlot(F f) {
        return Vector{f(0), f(0), f(1), f(1)};
    }
    static Frames movedUp(Frames row, double frame) {
        return __builtin_shufflevector(Frames{frame, frame}, row, 0, 2);
    }
};

} // namespace

void wavefrontOfFourLanes(float* frames, std::int64_t frameCount,
                          const BiquadCoefficients* coefficients,
                          WavefrontMemory& memory) noexcept HALVO_REALTIME {
    Wavefront<FourLanes>(coefficients).process(frames, frameCount, memory);
}

} // namespace halvo
