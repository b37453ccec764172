#include "nowplaying/TagService.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace halvo {

namespace {

using Json = nlohmann::json;

constexpr std::string_view kHost = HALVO_TAG_SERVICE_HOST;
constexpr std::string_view kKey = HALVO_TAG_SERVICE_KEY;
constexpr std::string_view kPlaceholder = "LASTFM_API_KEY_PLACEHOLDER";
constexpr std::int64_t kMinimumCount = 30;

bool isUnreserved(char byte) {
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
           (byte >= '0' && byte <= '9') || std::string_view("-._~").contains(byte);
}

std::string percentEncoded(const std::string& text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string encoded;
    for (const char byte : text) {
        if (isUnreserved(byte)) {
            encoded += byte;
            continue;
        }
        const auto value = static_cast<unsigned char>(byte);
        encoded += {'%', kDigits[value >> 4U], kDigits[value & 15U]};
    }
    return encoded;
}

const Json* member(const Json& object, const char* name) {
    if (!object.is_object()) return nullptr;
    const auto found = object.find(name);
    return found == object.end() ? nullptr : &*found;
}

std::optional<std::string> keptName(const Json& tag) {
    const auto* name = member(tag, "name");
    const auto* count = member(tag, "count");
    if (name == nullptr || !name->is_string()) return std::nullopt;
    if (count == nullptr || !count->is_number_integer()) return std::nullopt;
    if (count->get<std::int64_t>() < kMinimumCount) return std::nullopt;
    return name->get<std::string>();
}

} // namespace

std::string tagServiceAddress(const std::string& artist) {
    return "https://" + std::string(kHost) +
           "/2.0/?method=artist.gettoptags&artist=" + percentEncoded(artist) +
           "&api_key=" + std::string(kKey) + "&format=json";
}

bool hasTagServiceKey() {
    return kKey != kPlaceholder;
}

std::string userAgent() {
    return "Halvo/" HALVO_VERSION " (system-wide equalizer)";
}

std::optional<std::vector<std::string>> parseTags(const std::string& body) {
    const auto answer = Json::parse(body, nullptr, false);
    const auto* topTags = member(answer, "toptags");
    const auto* list = topTags == nullptr ? nullptr : member(*topTags, "tag");
    if (list == nullptr || !list->is_array()) return std::nullopt;
    if (!std::ranges::all_of(*list, &Json::is_object)) return std::nullopt;
    std::vector<std::string> names;
    for (const auto& tag : *list) {
        if (auto name = keptName(tag)) names.push_back(std::move(*name));
    }
    return names;
}

} // namespace halvo
