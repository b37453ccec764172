#pragma once

namespace halvo {

/// How a desktop shows a linear volume on its own sliders, so that the panel shows the same.
/// Positions and volumes are from 0 to 1. Any thread.
struct VolumeTaper {
    float (*position)(float volume);
    float (*volume)(float position);

    static const VolumeTaper identity;
    /// Half of the slider's way is an eighth of the amplitude.
    static const VolumeTaper cubeRoot;
};

} // namespace halvo
