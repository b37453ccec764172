#pragma once

#include "audio/AudioMeter.h"
#include "base/Color.h"
#include "platform/ScreenRect.h"
#include "platform/StatusPicture.h"

#include <functional>
#include <optional>
#include <vector>

namespace halvo {

/// What the icon in the menu bar or tray shows. Main thread only.
class StatusEQView {
  public:
    /// A colour of the person's choice, or nothing for the system's accent colour.
    using Accent = std::optional<Color>;

    float level = 0; ///< the last level of the meter; kept, not drawn
    std::vector<float> waveformSamples = std::vector<float>(AudioMeter::kHistoryLength);
    bool isIORunning = false;
    bool showActiveWaveform = true;
    /// Absent: the colour of the system's labels.
    std::optional<Accent> waveformColor;

    /// Asks for the picture to be drawn again.
    void setNeedsDisplay() {
        if (onNeedsDisplay) onNeedsDisplay();
    }
    std::function<void()> onNeedsDisplay;

    /// The amplitude envelope while sound flows and it is wanted, else the idle waveform.
    StatusPicture draw(ScreenSize size) const;

  private:
    StatusPicture drawAmplitudeEnvelope(ScreenSize size) const;
};

} // namespace halvo
