#pragma once

namespace halvo {

/// A command for a player.
enum class MediaCommand { play, pause, togglePlayPause, nextTrack, previousTrack };

} // namespace halvo
