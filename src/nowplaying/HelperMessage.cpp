#include "nowplaying/HelperMessage.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdint>
#include <string_view>

namespace halvo {

namespace {

using Json = nlohmann::json;

constexpr std::string_view kBase64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The parser's message quotes its input, which may be megabytes.
constexpr std::size_t kLongestError = 200;

std::string shortened(std::string text) {
    if (text.size() <= kLongestError) return text;
    auto end = kLongestError;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end; // never half a character
    return text.substr(0, end) + "…";
}

std::optional<std::string> stringMember(const Json& payload, const char* name) {
    const auto found = payload.find(name);
    if (found == payload.end() || !found->is_string()) return std::nullopt;
    return found->get<std::string>();
}

std::optional<double> durationOf(const Json& payload) {
    const auto micros = payload.find("durationMicros");
    if (micros == payload.end() || !micros->is_number()) return std::nullopt;
    const auto value = micros->get<double>();
    return value > 0 ? std::optional(value / 1'000'000) : std::nullopt;
}

HelperMessage messageOf(const Json& payload) {
    auto title = stringMember(payload, "title");
    // No title means that nothing plays, whatever the other fields say.
    if (!title || title->empty()) return {};
    HelperMessage message;
    message.track = NowPlayingTrack{.title = std::move(*title),
                                    .artist = stringMember(payload, "artist").value_or(""),
                                    .album = stringMember(payload, "album"),
                                    .bundleID = stringMember(payload, "bundleIdentifier"),
                                    .duration = durationOf(payload)};
    const auto isPlaying = payload.find("isPlaying");
    message.isPlaying =
        isPlaying != payload.end() && isPlaying->is_boolean() && isPlaying->get<bool>();
    message.artworkDataBase64 = stringMember(payload, "artworkDataBase64").value_or("");
    return message;
}

/// The six bits of a base64 digit; 64 for any other character.
unsigned digitValue(char digit) {
    static const auto values = [] {
        std::array<std::uint8_t, 256> table{};
        table.fill(64);
        for (std::size_t i = 0; i < kBase64Digits.size(); ++i)
            table.at(static_cast<unsigned char>(kBase64Digits[i])) = static_cast<std::uint8_t>(i);
        return table;
    }();
    return values.at(static_cast<unsigned char>(digit));
}

} // namespace

std::expected<std::optional<HelperMessage>, std::string>
parseHelperMessage(const std::string& line) {
    try {
        const auto json = Json::parse(line);
        if (!json.is_object() || stringMember(json, "type") != "data") return std::nullopt;
        const auto payload = json.find("payload");
        if (payload == json.end() || !payload->is_object()) return std::nullopt;
        return messageOf(*payload);
    } catch (const Json::exception& error) {
        return std::unexpected(shortened(error.what()));
    }
}

std::optional<std::string> decodeBase64(const std::string& text) {
    if (text.size() % 4 != 0) return std::nullopt;
    const auto padding = text.ends_with("==") ? 2U : text.ends_with('=') ? 1U : 0U;
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    unsigned count = 0; ///< bits that do not make a byte yet
    for (const char digit : std::string_view(text).substr(0, text.size() - padding)) {
        const auto value = digitValue(digit);
        if (value == 64) return std::nullopt;
        bits = (bits << 6U) | value;
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes += static_cast<char>((bits >> count) & 0xFFU);
    }
    const bool hasStrayBits = (bits & ((1U << count) - 1)) != 0;
    return hasStrayBits ? std::nullopt : std::optional(std::move(bytes));
}

} // namespace halvo
