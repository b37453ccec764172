#include "GenreShow.h"

#include "ApplicationBus.h"
#include "ApplicationRun.h"
#include "Progress.h"
#include "media/ScriptedPlayer.h"
#include "media/TagServer.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>

namespace halvo::demo {
namespace {

using media::ScriptedPlayer;
using media::TagServer;
using session::PrivateSession;

struct DemoSong {
    const char* title;
    const char* artist;
    TagServer::Tags tags;
    const char* preset;
};

const std::vector<DemoSong>& songs() {
    static const std::vector<DemoSong> all{
        {"Night Train", "The Blue Notes", {{"hard bop", 100}, {"jazz", 84}}, "Jazz"},
        {"Iron Road", "Hammer & Sons", {{"heavy metal", 100}, {"loud", 40}}, "Rock"},
        {"Kleine Wolke", "Zoë Müller", {{"ambient", 100}, {"berlin", 35}}, "Electronic"},
    };
    return all;
}

std::string joined(const TagServer::Tags& tags) {
    std::string text;
    for (const auto& [name, count] : tags)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

/// Switches the feature on for the next start; everything else in the settings stays.
bool switchOn(const MeasurementSession& session) {
    const std::filesystem::path file = session.configHome() + "/halvo/defaults.json";
    std::ifstream before(file);
    auto settings = nlohmann::json::parse(before, nullptr, false);
    if (!settings.is_object()) settings = nlohmann::json::object();
    settings["autoGenreEnabled"] = true;
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    std::ofstream after(file);
    after << settings.dump();
    return after.good();
}

AnnouncedTrack announce(const DemoSong& song, ScriptedPlayer& player, const TagServer& server,
                        const ApplicationBus& bus) {
    const auto asked = server.requests().size();
    const auto begin = std::chrono::steady_clock::now();
    player.setMetadata(
        {{"xesam:title", song.title}, {"xesam:artist", std::vector<std::string>{song.artist}}});
    player.setStatus("Playing");
    AnnouncedTrack track{.title = song.title, .artist = song.artist, .wanted = song.preset};
    (void)PrivateSession::waitFor([&] { // what it is after that time is reported
        track.preset = bus.activePreset();
        return track.preset == track.wanted;
    });
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    track.seconds = time.count();
    if (server.requests().size() == asked + 1) track.tags = joined(song.tags);
    return track;
}

std::expected<std::vector<AnnouncedTrack>, std::string> announceAll(const std::string& busSocket,
                                                                    const TagServer& server) {
    const auto player = ScriptedPlayer::start("unix:path=" + busSocket, "demo");
    if (!player) return std::unexpected("The demo's player cannot join the session bus.");
    const ApplicationBus bus(busSocket);
    std::vector<AnnouncedTrack> tracks;
    for (const auto& song : songs())
        tracks.push_back(announce(song, *player, server, bus));
    return tracks;
}

} // namespace

std::expected<std::vector<AnnouncedTrack>, std::string> showGenres(MeasurementSession& session) {
    TagServer server;
    for (const auto& song : songs())
        server.setTags(song.artist, song.tags);
    if (!switchOn(session)) return std::unexpected("The settings cannot be written.");
    auto application = ApplicationRun::start(session, {"HALVO_TAG_SERVICE=" + server.address()});
    if (!application) return std::unexpected(application.error());
    auto tracks = announceAll(session.busSocket(), server);
    if (!tracks) return tracks;
    if (auto ended = (*application)->quit(); !ended) return std::unexpected(ended.error());
    progress("A player announced %zu tracks; the preset follows their genre.", tracks->size());
    return tracks;
}

} // namespace halvo::demo
