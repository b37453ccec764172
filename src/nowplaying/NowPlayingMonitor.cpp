#include "nowplaying/NowPlayingMonitor.h"

#include "nowplaying/PlayerScripts.h"
#include "platform/BackgroundQueue.h"
#include "platform/MediaHelper.h"
#include "platform/SystemLog.h"

namespace halvo {

NowPlayingMonitor::NowPlayingMonitor(const NowPlayingServices& services)
    : services_(services),
      reader_(services.backgroundQueue, services.mainQueue, services.imageReader,
              services.systemLog,
              [this](const TrackPayload& payload) { handleTrackPayload(payload); }) {}

NowPlayingMonitor::~NowPlayingMonitor() = default;

void NowPlayingMonitor::announce(const char* prefix, const NowPlayingTrack& track) {
    services_.systemLog.write(std::string("Halvo: ") + prefix + ": \"" + track.title + "\" by \"" +
                              track.artist + "\" [" + track.bundleID.value_or("?") + "]");
}

void NowPlayingMonitor::clearTrack() {
    if (currentTrack.get()) {
        currentTrack.set(std::nullopt);
        artworkImage.set(std::nullopt);
    }
    isPlaying.set(false);
}

void NowPlayingMonitor::send(MediaCommand command) {
    if (!dylibPath_ || !scriptPath_) return sendCommandViaAppleScript(command);
    const auto call = services_.mediaHelper.command(*scriptPath_, *dylibPath_, helperWord(command));
    services_.backgroundQueue.async([services = services_, call, command] {
        const auto status = services.childProcesses.run(call);
        if (status) return; // by design whatever its exit status
        services.systemLog.write("Halvo: Failed to send command via helper: " + status.error());
        (void)runAppleScript(services.scriptRunner, services.systemLog, commandScript(command));
    });
}

} // namespace halvo
