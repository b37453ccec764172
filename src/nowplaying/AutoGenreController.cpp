#include "nowplaying/AutoGenreController.h"

#include "nowplaying/GenrePresetMapper.h"
#include "nowplaying/LastFMClient.h"
#include "nowplaying/NowPlayingMonitor.h"
#include "nowplaying/SpotifyClient.h"
#include "platform/MainQueue.h"
#include "platform/SystemLog.h"
#include "platform/UserDefaults.h"
#include "presets/PresetManager.h"

#include <chrono>
#include <utility>

namespace halvo {

using namespace std::chrono_literals;

namespace {

constexpr const char* kEnabledKey = "autoGenreEnabled";
constexpr const char* kFallbackPreset = "Clarity";
constexpr MainQueue::Duration kSettling = 500ms; ///< so that skipping through tracks counts once

} // namespace

AutoGenreController::AutoGenreController(AutoGenreServices services)
    : isEnabled(services.userDefaults.boolForKey(kEnabledKey)), services_(std::move(services)) {
    cancellables_.push_back(isEnabled.didChange(
        [this](bool enabled) { services_.userDefaults.setBool(kEnabledKey, enabled); }));
    setupPipeline();
    forwardChanges();
}

void AutoGenreController::setupPipeline() {
    if (const auto presets = services_.presetManager.lock()) {
        cancellables_.push_back(
            presets->activePresetID.pipe().dropFirst().dropAbsent().subscribe([this](UUID id) {
                if (id != lastAutoSwitchedPresetID_) userOverrideActive_ = true;
            }));
    }
    auto& track = services_.nowPlaying.currentTrack;
    cancellables_.push_back(track.pipe()
                                .removeDuplicates()
                                .dropAbsent()
                                .debounce(services_.mainQueue, kSettling)
                                .subscribe([this](const NowPlayingTrack& settled) {
                                    if (isEnabled.get()) handleNewTrack(settled);
                                }));
    cancellables_.push_back(isEnabled.pipe().removeDuplicates().subscribe([this](bool enabled) {
        const auto& current = services_.nowPlaying.currentTrack.get();
        if (enabled && current) handleNewTrack(NowPlayingTrack(*current));
    }));
}

void AutoGenreController::forwardChanges() {
    const auto own = [this](auto& value) {
        cancellables_.push_back(value.didChange([this](const auto&) { changed_.send(); }));
    };
    own(isEnabled);
    own(currentGenre);
    own(currentTrackDisplay);
    own(isLookingUp);
    const auto foreign = [this](auto& value) {
        cancellables_.push_back(value.didChange([this](const auto&) {
            services_.mainQueue.async([this, alive = lifetime_.watch()] {
                if (!alive.expired()) changed_.send();
            });
        }));
    };
    foreign(services_.spotify.isConnected);
    foreign(services_.spotify.lastLookupResult);
    foreign(services_.nowPlaying.currentTrack);
    foreign(services_.nowPlaying.isPlaying);
    foreign(services_.nowPlaying.artworkImage);
}

void AutoGenreController::handleNewTrack(const NowPlayingTrack& track) {
    userOverrideActive_ = false;
    const auto display = track.artist.empty() ? track.title : track.artist + " — " + track.title;
    currentTrackDisplay.set(display);
    log(" handling track: " + display);
    if (!track.artist.empty()) return startLookup(track.artist);
    // By design an earlier track's lookup continues, and its preset may still be activated.
    isLookingUp.set(false);
    currentGenre.set(kFallbackPreset);
    log(" — no artist, using Clarity preset");
    (void)apply(kFallbackPreset);
}

void AutoGenreController::startLookup(const std::string& artist) {
    lookupTask_ = std::make_shared<Subscription>();
    isLookingUp.set(true);
    services_.mainQueue.async([this, weak = std::weak_ptr(lookupTask_), artist] {
        const auto task = weak.lock();
        if (!task) return;
        *task = services_.lastFM.getArtistTags(
            artist, [this, artist](const auto& tags) { finishLookup(artist, tags); });
    });
}

void AutoGenreController::finishLookup(const std::string& artist,
                                       const std::vector<std::string>& tags) {
    isLookingUp.set(false);
    if (tags.empty()) {
        log(" — no tags found for '" + artist + "', using Clarity preset");
        currentGenre.set(kFallbackPreset);
        if (apply(kFallbackPreset)) {
            log(std::string(" activated fallback preset '") + kFallbackPreset + "'");
        }
        return;
    }
    const auto name = services_.mapper.bestPreset(tags);
    currentGenre.set(name);
    log(" mapped tags → preset '" + name + "'");
    if (apply(name)) log(" activated preset '" + name + "'");
}

bool AutoGenreController::apply(const std::string& presetName) {
    const auto presets = services_.presetManager.lock();
    if (userOverrideActive_ || !presets) return false;
    const auto preset = presets->presetNamed(presetName);
    if (!preset) return false;
    // Before the activation, whose notification must be recognised as this controller's own.
    lastAutoSwitchedPresetID_ = preset->id;
    presets->activate(*preset);
    return true;
}

void AutoGenreController::log(const std::string& text) {
    services_.systemLog.write("Halvo: AutoGenre" + text);
}

} // namespace halvo
