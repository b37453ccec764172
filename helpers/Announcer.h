#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace halvo::helper {

/// What makes up a track; a difference in any of it makes another track.
struct Track {
    std::string title; ///< empty: nothing plays
    std::string artist;
    std::string album;
    std::string bundleIdentifier;
    std::int64_t durationMicros = 0; ///< 0: not known

    bool operator==(const Track&) const = default;
};

/// One line's content.
struct Payload {
    Track track;
    bool isPlaying = false;
    std::string artwork = {}; ///< base64; empty: none
};

/// What a line looks like, its line feed included.
std::string lineFor(const Payload& payload);

/// Decides when a change is written and with what, in times that it is given. Changes within 50 ms
/// are one line, so a flood of them is at most 20 lines a second. An artist and a
/// cover that the player names within 300 ms go out with the title; a cover that has to be fetched
/// is waited for up to a second, and one that takes longer follows in a line of its own.
class Announcer {
  public:
    using Time = std::chrono::microseconds; ///< since any fixed moment

    /// What plays now, and its cover's address, "" for none.
    void follow(const Track& track, bool isPlaying, const std::string& artURL, Time now);
    /// The cover of the address that `coverToFetch` gave; empty when there is none.
    void takeCover(const std::string& artURL, const std::string& base64, Time now);

    /// When to ask the two below again; nothing while all is said.
    std::optional<Time> wake() const;
    /// A cover that has to be fetched over the network, once, and not while they come and go.
    std::optional<std::string> coverToFetch(Time now);
    /// The next line's content if it is due; from then on it counts as written.
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
    std::string writtenURL_;         ///< the cover's address of the line that began this track
    bool coverWritten_ = false;
    std::optional<Time> changedAt_; ///< of the first change that is not written
};

} // namespace halvo::helper
