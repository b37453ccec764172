#pragma once

#include <optional>
#include <string_view>

namespace halvo {

/// A colour in sRGB, each part from 0 to 1, opaque.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;

    /// Reads six hexadecimal digits in either case, with or without a "#" in front and white space
    /// around; anything else gives nothing.
    static std::optional<Color> parse(std::string_view text);

    bool operator==(const Color&) const = default;
};

} // namespace halvo
