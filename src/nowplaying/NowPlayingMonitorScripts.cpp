#include "nowplaying/NowPlayingMonitor.h"

#include "nowplaying/PlayerScripts.h"
#include "nowplaying/TagService.h"
#include "platform/BackgroundQueue.h"
#include "platform/HTTPSession.h"
#include "platform/MainQueue.h"

#include <algorithm>
#include <chrono>
#include <string_view>

namespace halvo {

using namespace std::chrono_literals;

namespace {

constexpr MainQueue::Duration kPollPeriod = 3s;
constexpr std::chrono::seconds kArtworkTimeout{60};
constexpr std::size_t kLargestArtwork = 16UL * 1024 * 1024;

/// Whether a text can be a URL: not empty, with valid characters only.
bool isAddress(const std::string& text) {
    const auto isAllowed = [](char byte) {
        return byte > ' ' && byte < '\x7F' && !std::string_view("\"<>\\^`{|}").contains(byte);
    };
    return !text.empty() && std::ranges::all_of(text, isAllowed);
}

} // namespace

void NowPlayingMonitor::startAppleScriptPolling() {
    fetchViaAppleScript();
    schedulePoll();
}

void NowPlayingMonitor::stopAppleScriptPolling() {
    pollTimer_.cancel();
}

/// Repeated delays, not periodic work, which pauses without sound: the poll must still see a player
/// pause.
void NowPlayingMonitor::schedulePoll() {
    pollTimer_ = services_.mainQueue.afterCancellable(kPollPeriod, [this] {
        schedulePoll();
        if (!isAppleScriptRunning_) fetchViaAppleScript();
    });
}

void NowPlayingMonitor::fetchViaAppleScript() {
    isAppleScriptRunning_ = true;
    services_.backgroundQueue.async([this, alive = lifetime_.watch(), &queue = services_.mainQueue,
                                     &scripts = services_.scriptRunner,
                                     &log = services_.systemLog] {
        auto answer = querySpotify(scripts, log);
        if (!answer) answer = queryAppleMusic(scripts, log); // by design even if Music plays
        queue.async([this, alive, answer = std::move(answer)] {
            if (!alive.expired()) applyPoll(answer);
        });
    });
}

void NowPlayingMonitor::applyPoll(const std::optional<PlayerAnswer>& answer) {
    isAppleScriptRunning_ = false;
    if (!answer) return clearTrack();
    isPlaying.set(answer->isPlaying);
    applyAppleScriptTrack(answer->track, answer->artworkURL);
}

void NowPlayingMonitor::applyAppleScriptTrack(const NowPlayingTrack& track,
                                              const std::optional<std::string>& artworkURL) {
    if (track == currentTrack.get()) return;
    announce("Now Playing (AppleScript)", track);
    currentTrack.set(track);
    if (artworkURL == lastArtworkURL_) return;
    lastArtworkURL_ = artworkURL;
    if (artworkURL && isAddress(*artworkURL)) return fetchArtwork(*artworkURL);
    artworkImage.set(std::nullopt);
}

void NowPlayingMonitor::fetchArtwork(const std::string& url) {
    services_.httpSession.get({.url = url,
                               .userAgent = userAgent(),
                               .timeout = kArtworkTimeout,
                               .maximumBytes = kLargestArtwork},
                              [this, alive = lifetime_.watch(), url](const auto& response) {
                                  if (alive.expired() || !response) return;
                                  publishArtwork(response->body, url);
                              });
}

void NowPlayingMonitor::publishArtwork(const std::string& bytes, const std::string& url) {
    services_.backgroundQueue.async([this, alive = lifetime_.watch(), bytes, url,
                                     &images = services_.imageReader,
                                     &queue = services_.mainQueue] {
        auto image = images.read(bytes, kLongestArtworkSide);
        if (!image) return;
        queue.async([this, alive, url, image = std::move(image)] {
            // A late answer belongs to another track.
            if (!alive.expired() && url == lastArtworkURL_) artworkImage.set(image);
        });
    });
}

void NowPlayingMonitor::sendCommandViaAppleScript(MediaCommand command) {
    services_.backgroundQueue.async([services = services_, command] {
        (void)runAppleScript(services.scriptRunner, services.systemLog, commandScript(command));
    });
}

} // namespace halvo
