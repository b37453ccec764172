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

/// The controller's services.
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

/// Activates the preset for the genre of what is playing, unless the user picks another one for the
/// track. Main thread only.
class AutoGenreController {
  public:
    /// Starts observing; if enabled, handles the current track at once.
    explicit AutoGenreController(AutoGenreServices services);

    Published<bool> isEnabled; ///< saved in the user defaults on each change
    Published<std::optional<std::string>> currentGenre; ///< the chosen preset's name
    Published<std::optional<std::string>> currentTrackDisplay;
    Published<bool> isLookingUp{false};

    SpotifyClient& spotifyClient() { return services_.spotify; }

    /// Calls `handler` after any change of the values above, and later on the main queue after a
    /// change of the monitor's or the streaming client's values.
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
    bool userOverrideActive_ = false; ///< the user chose a preset since the track began

    Lifetime lifetime_;
    std::vector<Subscription> cancellables_; // last: destroyed first
};

} // namespace halvo
