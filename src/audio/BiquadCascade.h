#pragma once

#include "audio/BandFrequencies.h"
#include "audio/BiquadCoefficients.h"
#include "audio/SampleBlock.h"
#include "audio/WavefrontMemory.h"
#include "base/Realtime.h"

#include <array>

namespace halvo {

/// Ten second-order sections in series for each of two interleaved channels, with the channels'
/// memory. Transposed direct form II; every section's operations keep the order of
/// y = b0·x + z1, z1 = b1·x − a1·y + z2, z2 = b2·x − a2·y, so that the result is the same to the
/// last bit however the work is laid out. Render thread, but for the choice of the form.
class BiquadCascade {
  public:
    using Coefficients = std::array<BiquadCoefficients, kBandCount>;

    /// How many numbers the work is done on at a time.
    enum class Form { FourLanes, EightLanes };
    /// Whether this processor has the instructions of a form. Any thread.
    static bool canRun(Form form);
    /// The fastest form on this processor. Any thread.
    static Form fastestForm();

    explicit BiquadCascade(Form form = fastestForm()) : form_(form) {}

    /// Filters a block of two channels in place.
    void process(const SampleBlock& stereo,
                 const Coefficients& coefficients) noexcept HALVO_REALTIME;

    /// Empties the memory. Not while another thread processes.
    void reset() { memory_ = {}; }

  private:
    void heal() noexcept HALVO_REALTIME;

    Form form_;
    WavefrontMemory memory_;
};

} // namespace halvo
