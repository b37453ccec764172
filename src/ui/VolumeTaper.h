#pragma once

namespace halvo {

/// How a desktop's sliders show a linear volume; the panel uses the same scale. Positions and
/// volumes are from 0 to 1. Any thread.
struct VolumeTaper {
    float (*position)(float volume);
    float (*volume)(float position);

    static const VolumeTaper identity;
    /// Half of the slider is an eighth of the amplitude.
    static const VolumeTaper cubeRoot;
};

} // namespace halvo
