#pragma once

#include <optional>
#include <string>

namespace halvo {

/// The current track, as its player reports it. Texts are UTF-8.
struct NowPlayingTrack {
    std::string title;
    std::string artist; ///< empty when the source gives none
    std::optional<std::string> album;
    std::optional<std::string> bundleID; ///< the playing application
    std::optional<double> duration;      ///< seconds

    bool operator==(const NowPlayingTrack&) const = default;
};

} // namespace halvo
