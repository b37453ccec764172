#include "Announcer.h"

#include "Cover.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace halvo::helper {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kGathering{50};
constexpr milliseconds kTrackComplete{300};
constexpr milliseconds kCoverFetched{1000};
constexpr milliseconds kPlayersFound{500}; ///< at the start, before "nothing plays" is written

} // namespace

std::string lineFor(const Payload& payload) {
    nlohmann::json fields{{"isPlaying", payload.isPlaying}};
    const auto add = [&](const char* key, const std::string& text) {
        if (!text.empty()) fields[key] = text;
    };
    add("title", payload.track.title);
    add("artist", payload.track.artist);
    add("album", payload.track.album);
    add("bundleIdentifier", payload.track.bundleIdentifier);
    add("artworkDataBase64", payload.artwork);
    if (payload.track.durationMicros > 0) fields["durationMicros"] = payload.track.durationMicros;
    const nlohmann::json line{{"type", "data"}, {"payload", std::move(fields)}};
    return line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
}

void Announcer::changed(Time now) {
    const bool allSaid = !isNewTrack() && written_->isPlaying == isPlaying_ && !hasLateCover();
    if (allSaid) {
        changedAt_.reset();
    } else if (!changedAt_) {
        changedAt_ = now;
    }
}

void Announcer::follow(const Track& track, bool isPlaying, const std::string& artURL, Time now) {
    track_ = track;
    isPlaying_ = isPlaying;
    if (artURL != cover_.url) {
        cover_ = {artURL, isRemoteCover(artURL) ? Fetch::wanted : Fetch::none, now};
    }
    changed(now);
}

void Announcer::takeCover(const std::string& artURL, const std::string& base64, Time now) {
    if (artURL != cover_.url) return;
    cover_.fetch = Fetch::done;
    cover_.base64 = base64;
    changed(now);
}

std::optional<std::string> Announcer::coverToFetch(Time now) {
    const auto due = fetchDue();
    if (!due || now < *due) return std::nullopt;
    cover_.fetch = Fetch::underWay;
    return cover_.url;
}

/// Players name a file before they have read its tags, and the cover of the track before may still
/// be there for a moment.
bool Announcer::mayStillGrow() const {
    return track_.artist.empty() || cover_.url.empty() || (written_ && cover_.url == writtenURL_);
}

bool Announcer::hasLateCover() const {
    return !coverWritten_ && cover_.fetch == Fetch::done && !cover_.base64.empty();
}

std::optional<Announcer::Time> Announcer::fetchDue() const {
    if (cover_.fetch != Fetch::wanted || track_.title.empty()) return std::nullopt;
    return cover_.namedAt + kGathering;
}

std::optional<Announcer::Time> Announcer::wake() const {
    const auto line = lineDue();
    const auto fetch = fetchDue();
    return line && fetch ? std::min(*line, *fetch) : (line ? line : fetch);
}

std::optional<Payload> Announcer::lineToWrite(Time now) {
    const auto due = lineDue();
    return due && now >= *due ? std::optional(take()) : std::nullopt;
}

std::optional<Announcer::Time> Announcer::lineDue() const {
    if (!changedAt_) return std::nullopt;
    if (!isNewTrack()) return *changedAt_ + kGathering;
    if (track_.title.empty()) return *changedAt_ + (written_ ? kGathering : kPlayersFound);
    if (mayStillGrow()) return *changedAt_ + kTrackComplete;
    const bool isFetching = cover_.fetch == Fetch::wanted || cover_.fetch == Fetch::underWay;
    return *changedAt_ + (isFetching ? kCoverFetched : kGathering);
}

Payload Announcer::take() {
    Payload payload{track_, isPlaying_};
    const bool isNew = isNewTrack();
    if (!track_.title.empty() && (isNew || hasLateCover())) {
        // Read now: players write every cover to the same file.
        const bool isRemote = cover_.fetch != Fetch::none;
        payload.artwork = isRemote ? cover_.base64 : localCover(cover_.url);
        coverWritten_ = !isRemote || !payload.artwork.empty();
        writtenURL_ = cover_.url;
    }
    written_ = Payload{track_, isPlaying_};
    changedAt_.reset();
    return payload;
}

} // namespace halvo::helper
