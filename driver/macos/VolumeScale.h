#pragma once

namespace halvo::driver {

/// The volume control's scale. A position is the linear amplitude that the application multiplies
/// with, so the decibels are what will be heard.
struct VolumeScale {
    static constexpr float kLowest = -96.0F; ///< dB; stands for silence, too
    static constexpr float kHighest = 0.0F;  ///< dB

    /// What is beyond an end becomes that end; NaN becomes 0.
    static float clampedScalar(float scalar);
    static float decibels(float scalar);
    static float scalar(float decibels);
};

} // namespace halvo::driver
