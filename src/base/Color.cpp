#include "base/Color.h"

#include <charconv>
#include <cstdint>

namespace halvo {

namespace {

constexpr std::size_t kDigits = 6;

// ASCII white space, the line breaks NEL, U+2028 and U+2029, and the blanks U+00A0, U+1680,
// U+2000 … U+200B, U+202F, U+205F and U+3000.
std::size_t leadingSpace(std::string_view text) {
    const auto byte = [&](std::size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
    };
    if (byte(0) == ' ' || (byte(0) >= '\t' && byte(0) <= '\r')) return 1;
    if (byte(0) == 0xC2 && (byte(1) == 0x85 || byte(1) == 0xA0)) return 2;
    if (byte(0) == 0xE1 && byte(1) == 0x9A && byte(2) == 0x80) return 3;
    if (byte(0) == 0xE3 && byte(1) == 0x80 && byte(2) == 0x80) return 3;
    if (byte(0) != 0xE2) return 0;
    const bool isGeneral =
        byte(1) == 0x80 && ((byte(2) >= 0x80 && byte(2) <= 0x8B) || byte(2) == 0xA8 ||
                            byte(2) == 0xA9 || byte(2) == 0xAF);
    return isGeneral || (byte(1) == 0x81 && byte(2) == 0x9F) ? 3 : 0;
}

std::string_view trimmed(std::string_view text) {
    while (const auto space = leadingSpace(text))
        text.remove_prefix(space);
    for (bool found = true; found && !text.empty();) {
        found = false;
        for (const std::size_t size : {std::size_t{1}, std::size_t{2}, std::size_t{3}}) {
            if (size > text.size() || leadingSpace(text.substr(text.size() - size)) != size)
                continue;
            text.remove_suffix(size);
            found = true;
            break;
        }
    }
    return text;
}

} // namespace

std::optional<Color> Color::parse(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with('#')) text.remove_prefix(1);
    if (text.size() != kDigits) return std::nullopt;
    std::uint32_t number = 0;
    const auto* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, 16);
    if (result.ec != std::errc{} || result.ptr != end) return std::nullopt;
    const auto part = [number](unsigned shift) {
        return static_cast<double>((number >> shift) & 0xFFU) / 255.0;
    };
    return Color{part(16), part(8), part(0)};
}

} // namespace halvo
