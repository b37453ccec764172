#include "ui/DisplayRules.h"

#include <algorithm>
#include <cmath>

namespace halvo {

bool isLight(const Color& color) {
    return 0.2126 * color.red + 0.7152 * color.green + 0.0722 * color.blue > 0.6;
}

std::string hexDigits(const Color& color) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string text;
    for (const double part : {color.red, color.green, color.blue}) {
        const auto value = static_cast<unsigned>(std::clamp(part, 0.0, 1.0) * 255.0);
        text += kDigits[value / 16U];
        text += kDigits[value % 16U];
    }
    return text;
}

std::string hexFromTypedText(const std::string& text) {
    std::string result = text;
    std::erase(result, '#');
    return "#" + result;
}

std::string gainText(float gain) {
    if (!std::isfinite(gain)) return "+0.0";
    // Ten times a float is exact as a double; ties round to even.
    const double tenths = std::nearbyint(static_cast<double>(std::clamp(gain, -1e6F, 1e6F)) * 10.0);
    const auto magnitude = static_cast<long>(std::fabs(tenths));
    return (std::signbit(gain) ? "-" : "+") + std::to_string(magnitude / 10) + "." +
           std::to_string(magnitude % 10);
}

std::string percentText(float position) {
    if (!std::isfinite(position)) return "0%";
    return std::to_string(static_cast<int>(std::clamp(position, -1e6F, 1e6F) * 100.0F)) + "%";
}

bool showsMuted(float position) {
    return position < 0.01F;
}

float gainAt(float y, float height, float maxGain) {
    if (!(height > 0.0F)) return 0.0F;
    const float gain = ((1.0F - y / height) - 0.5F) * 2.0F * maxGain;
    return std::clamp(gain, -maxGain, maxGain);
}

} // namespace halvo
