#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace halvo::helper {

/// What identifies a track: when any of it differs, it is another track.
struct Track {
    std::string title; ///< empty: nothing plays
    std::string artist;
    std::string album;
    std::string bundleIdentifier;
    std::int64_t durationMicros = 0; ///< 0: not known

    bool operator==(const Track&) const = default;
};

/// The content of one line of output.
struct Payload {
    Track track;
    bool isPlaying = false;
    std::string artwork = {}; ///< base64; empty: none
};

/// The line as it is written, with its line feed.
std::string lineFor(const Payload& payload);

/// Decides when a change is written and what the line holds; the caller gives the time. Changes
/// within 50 ms share a line, so there are at most 20 lines a second. An artist or cover that the
/// player reports within 300 ms of the title goes into the same line. A cover that has to be
/// fetched delays the line by up to a second; one that takes longer follows in a line of its own.
class Announcer {
  public:
    using Time = std::chrono::microseconds; ///< since any fixed point in time

    /// The current track, and its cover's URL; "" for none.
    void follow(const Track& track, bool isPlaying, const std::string& artURL, Time now);
    /// The cover from the URL that `coverToFetch` gave; empty when there is none.
    void takeCover(const std::string& artURL, const std::string& base64, Time now);

    /// When to call the two below again; nothing while no change is pending.
    std::optional<Time> wake() const;
    /// The URL of a cover that has to be fetched over the network: each once, and not while tracks
    /// are being skipped.
    std::optional<std::string> coverToFetch(Time now);
    /// The next line's content if it is due; the caller has to write it.
    std::optional<Payload> lineToWrite(Time now);

  private:
    enum class Fetch { none, wanted, underWay, done };
    struct Cover {
        std::string url;
        Fetch fetch = Fetch::none;
        Time namedAt{0};
        std::string base64 = {};
    };

    bool isNewTrack() const { return !written_ || written_->track != track_; }
    bool mayStillGrow() const;
    bool hasLateCover() const;
    void changed(Time now);
    std::optional<Time> lineDue() const;
    std::optional<Time> fetchDue() const;
    Payload take();

    Track track_;
    bool isPlaying_ = false;
    Cover cover_;

    std::optional<Payload> written_; ///< without its artwork
    std::string writtenURL_;         ///< the cover's URL in the first line of this track
    bool coverWritten_ = false;
    std::optional<Time> changedAt_; ///< the time of the first change not yet written
};

} // namespace halvo::helper
