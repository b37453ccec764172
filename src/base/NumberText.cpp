#include "base/NumberText.h"

#include <array>
#include <charconv>
#include <cmath>

namespace halvo {

std::string numberText(float value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    const float magnitude = std::fabs(value);
    const bool plain = value == 0.0F || (magnitude >= 1e-4F && magnitude < 16777216.0F);
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                   plain ? std::chars_format::fixed : std::chars_format::scientific)
                         .ptr;
    std::string result(text.data(), end);
    if (plain && result.find('.') == std::string::npos) result += ".0";
    return result;
}

} // namespace halvo
