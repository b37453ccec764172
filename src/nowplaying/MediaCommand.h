#pragma once

namespace halvo {

/// What a player can be asked to do.
enum class MediaCommand { play, pause, togglePlayPause, nextTrack, previousTrack };

} // namespace halvo
