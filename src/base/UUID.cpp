#include "base/UUID.h"

#include <random>

namespace halvo {

namespace {

constexpr std::size_t kTextLength = 36;

constexpr bool isHyphenPosition(std::size_t index) {
    return index == 8 || index == 13 || index == 18 || index == 23;
}

std::optional<std::uint8_t> nibble(char digit) {
    if (digit >= '0' && digit <= '9') return static_cast<std::uint8_t>(digit - '0');
    if (digit >= 'A' && digit <= 'F') return static_cast<std::uint8_t>(digit - 'A' + 10);
    if (digit >= 'a' && digit <= 'f') return static_cast<std::uint8_t>(digit - 'a' + 10);
    return std::nullopt;
}

} // namespace

UUID UUID::random() {
    std::random_device device;
    UUID result;
    for (auto& byte : result.bytes_)
        byte = static_cast<std::uint8_t>(device() & 0xFFU);
    result.bytes_[6] = static_cast<std::uint8_t>((result.bytes_[6] & 0x0FU) | 0x40U);
    result.bytes_[8] = static_cast<std::uint8_t>((result.bytes_[8] & 0x3FU) | 0x80U);
    return result;
}

std::optional<UUID> UUID::parse(std::string_view text) {
    if (text.size() != kTextLength) return std::nullopt;
    UUID result;
    std::size_t digits = 0;
    for (std::size_t i = 0; i < kTextLength; ++i) {
        if (isHyphenPosition(i)) {
            if (text[i] != '-') return std::nullopt;
            continue;
        }
        const auto value = nibble(text[i]);
        if (!value) return std::nullopt;
        auto& byte = result.bytes_[digits / 2];
        byte = static_cast<std::uint8_t>((byte << 4U) | *value);
        ++digits;
    }
    return result;
}

std::string UUID::text() const {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string result;
    result.reserve(kTextLength);
    for (const auto byte : bytes_) {
        if (isHyphenPosition(result.size())) result += '-';
        result += kDigits[byte >> 4U];
        result += kDigits[byte & 0x0FU];
    }
    return result;
}

} // namespace halvo
