// What the script calls, by name: halvo_media_ and a word. Each ends the process.

#include "helpers/macos/MediaRemote.h"
#include "helpers/macos/NowPlayingLoop.h"

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace {

using halvo::helper::MediaRemote;
using halvo::helper::NowPlayingLoop;

/// Ends the process with the status that `work` returns; not by way of perl's own clearing up.
template <typename Work> [[noreturn]] void finishWith(Work work) noexcept {
    int status = EXIT_FAILURE;
    try {
        const auto remote = MediaRemote::load();
        if (!remote)
            (void)std::fputs("media_helper: the system does not tell what plays\n", stderr);
        if (remote) status = work(*remote);
    } catch (const std::exception& problem) { // memory: the application starts us again
        (void)std::fprintf(stderr, "media_helper: %s\n", problem.what());
    }
    std::_Exit(status);
}

[[noreturn]] void send(MediaRemote::Command command) {
    finishWith([command](MediaRemote& remote) {
        return remote.send(command) ? EXIT_SUCCESS : EXIT_FAILURE;
    });
}

} // namespace

#define HALVO_ENTRY extern "C" __attribute__((visibility("default"))) void

HALVO_ENTRY halvo_media_loop() {
    finishWith([](MediaRemote& remote) -> int { NowPlayingLoop(remote).run(); });
}
HALVO_ENTRY halvo_media_play() {
    send(MediaRemote::Command::play);
}
HALVO_ENTRY halvo_media_pause() {
    send(MediaRemote::Command::pause);
}
HALVO_ENTRY halvo_media_toggle_play_pause() {
    send(MediaRemote::Command::togglePlayPause);
}
HALVO_ENTRY halvo_media_next_track() {
    send(MediaRemote::Command::next);
}
HALVO_ENTRY halvo_media_previous_track() {
    send(MediaRemote::Command::previous);
}
