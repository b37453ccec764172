#include "GenreShow.h"

#include "ApplicationRun.h"
#include "Progress.h"
#include "media/ScriptedPlayer.h"
#include "media/TagServer.h"

#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusReply>

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

const QString kConnectionName = QStringLiteral("halvo-demo-genres");

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
bool switchOn(const Stage& stage) {
    const std::filesystem::path file = stage.configHome() + "/halvo/defaults.json";
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

std::string activePreset(const QDBusConnection& bus) {
    QDBusInterface status(QStringLiteral("org.halvo.Halvo"),
                          QStringLiteral("/org/halvo/Halvo/Status"),
                          QStringLiteral("org.halvo.Status"), bus);
    const QDBusReply<QString> name = status.call(QStringLiteral("ActivePreset"));
    return name.value().toStdString();
}

AnnouncedTrack announce(const DemoSong& song, ScriptedPlayer& player, const TagServer& service,
                        const QDBusConnection& bus) {
    const auto asked = service.requests().size();
    const auto begin = std::chrono::steady_clock::now();
    player.setMetadata(
        {{"xesam:title", song.title}, {"xesam:artist", std::vector<std::string>{song.artist}}});
    player.setStatus("Playing");
    AnnouncedTrack track{.title = song.title, .artist = song.artist, .wanted = song.preset};
    (void)PrivateSession::waitFor([&] { // what it is after that time is reported
        track.preset = activePreset(bus);
        return track.preset == track.wanted;
    });
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    track.seconds = time.count();
    if (service.requests().size() == asked + 1) track.tags = joined(song.tags);
    return track;
}

std::expected<std::vector<AnnouncedTrack>, std::string> announceAll(const std::string& busAddress,
                                                                    const TagServer& service) {
    const auto player = ScriptedPlayer::start(busAddress, "demo");
    if (!player) return std::unexpected("The demo's player cannot join the session bus.");
    const auto bus =
        QDBusConnection::connectToBus(QString::fromStdString(busAddress), kConnectionName);
    std::vector<AnnouncedTrack> tracks;
    for (const auto& song : songs())
        tracks.push_back(announce(song, *player, service, bus));
    return tracks;
}

} // namespace

std::expected<std::vector<AnnouncedTrack>, std::string> showGenres(Stage& stage) {
    TagServer service;
    for (const auto& song : songs())
        service.setTags(song.artist, song.tags);
    if (!switchOn(stage)) return std::unexpected("The settings cannot be written.");
    auto application = ApplicationRun::start(stage, {"HALVO_TAG_SERVICE=" + service.address()});
    if (!application) return std::unexpected(application.error());
    if (auto ready = (*application)->waitUntilReady(); !ready)
        return std::unexpected(ready.error());
    auto tracks = announceAll("unix:path=" + stage.session().directory() + "/run/bus", service);
    QDBusConnection::disconnectFromBus(kConnectionName);
    if (!tracks) return tracks;
    if (auto ended = (*application)->quit(); !ended) return std::unexpected(ended.error());
    progress("A player announced %zu tracks; the preset follows their genre.", tracks->size());
    return tracks;
}

} // namespace halvo::demo
