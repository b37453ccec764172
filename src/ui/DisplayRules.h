#pragma once

#include "base/Color.h"

#include <string>

namespace halvo {

// How values look in the panel. Nothing here depends on the locale. Any thread.

/// Whether dark text reads better on the colour: the weighted sum of the plain sRGB components.
bool isLight(const Color& color);

/// Six digits in upper case without "#"; each component is truncated.
std::string hexDigits(const Color& color);

/// The typed text with exactly one "#", at the front; digits keep their case.
std::string hexFromTypedText(const std::string& text);

/// Decibels with sign and one decimal: "+0.0", "-3.5".
std::string gainText(float gain);

/// A position from 0 to 1 as a truncated percentage, in single precision: 0.29 is "29%", 0.53
/// "52%".
std::string percentText(float position);

/// Whether the volume shows as muted: below one hundredth.
bool showsMuted(float position);

/// The gain at a place on a vertical track, in dB: `maxGain` at its top, the negative at its
/// bottom, not beyond. A track without height gives 0.
float gainAt(float y, float height, float maxGain);

} // namespace halvo
