#include "audio/BiquadCascade.h"

#include <cmath>

namespace halvo {

bool BiquadCascade::canRun([[maybe_unused]] Form form) {
#if defined(__x86_64__)
    __builtin_cpu_init();
    return form == Form::FourLanes || __builtin_cpu_supports("avx2");
#else
    return true;
#endif
}

BiquadCascade::Form BiquadCascade::fastestForm() {
#if defined(__x86_64__)
    return canRun(Form::EightLanes) ? Form::EightLanes : Form::FourLanes;
#else
    return Form::FourLanes; // the registers' own width
#endif
}

void BiquadCascade::process(const SampleBlock& stereo,
                            const Coefficients& coefficients) noexcept HALVO_REALTIME {
    float* const frames = stereo.samples().data();
    if (form_ == Form::EightLanes) {
        wavefrontOfEightLanes(frames, stereo.frameCount(), coefficients.data(), memory_);
    } else {
        wavefrontOfFourLanes(frames, stereo.frameCount(), coefficients.data(), memory_);
    }
    heal();
}

/// A sample that is not finite would stay in the feedback for ever.
void BiquadCascade::heal() noexcept HALVO_REALTIME {
    for (auto* memory : {&memory_.z1, &memory_.z2}) {
        for (float& value : *memory)
            value = std::isfinite(value) ? value : 0.0F;
    }
}

} // namespace halvo
