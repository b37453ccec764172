#include "linux/mpris/PlayerState.h"

#include <cmath>
#include <functional>
#include <string>
#include <string_view>

namespace halvo::mpris {

namespace {

constexpr std::size_t kLongestText = 4096;                ///< bytes
constexpr std::size_t kLongestAddress = 8U * 1024 * 1024; ///< a data: URL may contain a picture

std::string_view cut(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) return text;
    while (limit > 0 && (static_cast<unsigned char>(text[limit]) & 0xC0U) == 0x80U)
        --limit; // not inside a character
    return text.substr(0, limit);
}

/// Iterates over a dictionary. `take` gets the key and the variant's type, and may read the
/// variant's content.
bool forEachEntry(sd_bus_message* message,
                  const std::function<void(std::string_view key, const char* type)>& take) {
    if (sd_bus_message_enter_container(message, 'a', "{sv}") <= 0) return false;
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        const char* key = nullptr;
        char kind = 0;
        const char* type = nullptr;
        if (sd_bus_message_read_basic(message, 's', &key) <= 0) return false;
        if (sd_bus_message_peek_type(message, &kind, &type) <= 0) return false;
        const std::string content = type;
        if (sd_bus_message_enter_container(message, 'v', content.c_str()) <= 0) return false;
        take(key, content.c_str());
        while (sd_bus_message_at_end(message, 0) == 0) { // skips what `take` did not read
            if (sd_bus_message_skip(message, nullptr) <= 0) return false;
        }
        if (sd_bus_message_exit_container(message) < 0) return false;
        if (sd_bus_message_exit_container(message) < 0) return false;
    }
    return sd_bus_message_exit_container(message) >= 0;
}

std::string readString(sd_bus_message* message, char type, std::size_t limit) {
    const char* text = nullptr;
    if (sd_bus_message_read_basic(message, type, &text) <= 0) return {};
    return std::string(cut(text, limit));
}

/// A text, or the first non-empty one of a list: tags are looked up for one artist.
std::string readText(sd_bus_message* message, std::string_view type, std::size_t limit) {
    if (type == "s" || type == "o" || type == "g") return readString(message, type[0], limit);
    if (type != "as") return {};
    std::string first;
    if (sd_bus_message_enter_container(message, 'a', "s") <= 0) return {};
    while (sd_bus_message_at_end(message, 0) == 0) {
        auto text = readString(message, 's', limit);
        if (first.empty()) first = std::move(text);
    }
    (void)sd_bus_message_exit_container(message); // cannot fail at the container's end
    return first;
}

template <typename Number> std::optional<double> readAs(sd_bus_message* message, char type) {
    Number number{};
    if (sd_bus_message_read_basic(message, type, &number) <= 0) return std::nullopt;
    return static_cast<double>(number);
}

std::optional<double> readNumber(sd_bus_message* message, std::string_view type) {
    if (type.size() != 1) return std::nullopt;
    switch (type[0]) {
    case 'n':
        return readAs<std::int16_t>(message, 'n');
    case 'q':
        return readAs<std::uint16_t>(message, 'q');
    case 'i':
        return readAs<std::int32_t>(message, 'i');
    case 'u':
        return readAs<std::uint32_t>(message, 'u');
    case 'x':
        return readAs<std::int64_t>(message, 'x');
    case 't':
        return readAs<std::uint64_t>(message, 't');
    case 'd':
        return readAs<double>(message, 'd');
    default:
        return std::nullopt;
    }
}

std::optional<std::int64_t> wholeMicroseconds(std::optional<double> number) {
    constexpr double kLongest = 9e15; // some players use the largest number for "unknown"
    if (!number || !std::isfinite(*number) || *number < 1 || *number > kLongest) return {};
    return static_cast<std::int64_t>(*number);
}

Metadata readMetadata(sd_bus_message* message) {
    Metadata metadata;
    (void)forEachEntry(message, [&](std::string_view key, const char* type) {
        if (key == "xesam:title") metadata.title = readText(message, type, kLongestText);
        if (key == "xesam:artist") metadata.artist = readText(message, type, kLongestText);
        if (key == "xesam:album") metadata.album = readText(message, type, kLongestText);
        if (key == "mpris:artUrl") metadata.artURL = readText(message, type, kLongestAddress);
        if (key == "mpris:length")
            metadata.lengthMicros = wholeMicroseconds(readNumber(message, type));
    });
    return metadata;
}

PlaybackStatus statusOf(std::string_view text) {
    if (text == "Playing") return PlaybackStatus::playing;
    return text == "Paused" ? PlaybackStatus::paused : PlaybackStatus::stopped;
}

} // namespace

bool readProperties(sd_bus_message* message, PlayerProperties& into) {
    return forEachEntry(message, [&](std::string_view key, const char* type) {
        if (key == "PlaybackStatus") into.status = statusOf(readText(message, type, kLongestText));
        if (key == "DesktopEntry") into.desktopEntry = readText(message, type, kLongestText);
        if (key != "Metadata") return;
        into.metadata = std::string_view(type) == "a{sv}" ? readMetadata(message) : Metadata{};
    });
}

} // namespace halvo::mpris
