#pragma once

#include "audio/AudioMeter.h"
#include "settings/Color.h"

#include <functional>
#include <optional>
#include <utility>

namespace halvo {

/// What the icon in the menu bar or tray shows. Main thread only.
class StatusEQView {
  public:
    /// A colour of the person's choice, or nothing for the system's accent colour.
    using Accent = std::optional<Color>;

    float level = 0; ///< the last level of the meter; kept, not drawn
    AudioMeter::History waveformSamples{};
    bool isIORunning = false;
    bool showActiveWaveform = true;
    /// Absent: the colour of the system's labels.
    std::optional<Accent> waveformColor;

    /// Asks for the picture to be drawn again.
    void setNeedsDisplay() {
        if (onNeedsDisplay) onNeedsDisplay();
    }
    std::function<void()> onNeedsDisplay;
};

} // namespace halvo
