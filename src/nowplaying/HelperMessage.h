#pragma once

#include "nowplaying/NowPlayingTrack.h"

#include <expected>
#include <optional>
#include <string>

namespace halvo {

/// One line of the helper: what is playing, or that nothing is.
struct HelperMessage {
    std::optional<NowPlayingTrack> track;
    bool isPlaying = false;
    std::string artworkDataBase64; ///< empty without artwork
};

/// Reads a line: one JSON object of type "data" with an object as payload. Nothing for other JSON;
/// an error's description when it is not JSON.
std::expected<std::optional<HelperMessage>, std::string>
parseHelperMessage(const std::string& line);

/// Decodes strict base64; nothing for any other text.
std::optional<std::string> decodeBase64(const std::string& text);

} // namespace halvo
