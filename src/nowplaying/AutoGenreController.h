#pragma once

#include "base/ChangeNotice.h"
#include "base/Lifetime.h"
#include "base/Published.h"
#include "base/Subscription.h"
#include "base/UUID.h"
#include "nowplaying/NowPlayingTrack.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

class GenrePresetMapper;
class LastFMClient;
class MainQueue;
class NowPlayingMonitor;
class PresetManager;
class SpotifyClient;
class SystemLog;
class UserDefaults;

/// What the controller works with.
struct AutoGenreServices {
    NowPlayingMonitor& nowPlaying;
    SpotifyClient& spotify;
    LastFMClient& lastFM;
    const GenrePresetMapper& mapper;
    std::weak_ptr<PresetManager> presetManager; ///< without it nothing is activated
    UserDefaults& userDefaults;
    MainQueue& mainQueue;
    SystemLog& systemLog;
};

/// Activates the preset that suits the genre of what is playing, until somebody picks another one
/// for the track. Main thread only.
class AutoGenreController {
  public:
    /// Starts observing; a track that is current is handled at once where the feature is on.
    explicit AutoGenreController(AutoGenreServices services);

    Published<bool> isEnabled; ///< kept in the user defaults with every change
    Published<std::optional<std::string>> currentGenre; ///< the chosen preset's name
    Published<std::optional<std::string>> currentTrackDisplay;
    Published<bool> isLookingUp{false};

    SpotifyClient& spotifyClient() { return services_.spotify; }

    /// Calls `handler` after any change of the values above, and one turn after any change of the
    /// monitor's or the streaming client's.
    Subscription didChange(std::function<void()> handler) {
        return changed_.subscribe(std::move(handler));
    }

  private:
    void setupPipeline();
    void forwardChanges();
    void handleNewTrack(const NowPlayingTrack& track);
    void startLookup(const std::string& artist);
    void finishLookup(const std::string& artist, const std::vector<std::string>& tags);
    /// Whether the preset was activated.
    bool apply(const std::string& presetName);
    void log(const std::string& text);

    AutoGenreServices services_;
    ChangeNotice changed_;
    std::shared_ptr<Subscription> lookupTask_; ///< dropping it cancels the look-up
    std::optional<UUID> lastAutoSwitchedPresetID_;
    bool userOverrideActive_ = false; ///< somebody chose a preset since the track began

    Lifetime lifetime_;
    std::vector<Subscription> cancellables_; // last: the handlers die first
};

} // namespace halvo
