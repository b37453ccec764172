#include "application/ApplicationScene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

using namespace halvo::test;
using halvo::session::PrivateSession;
using halvo::session::Recorder;

namespace {

/// Voluntary context switches of each thread of a process, by "name/number".
std::map<std::string, long> switches(int pid) {
    std::map<std::string, long> result;
    for (const auto& task :
         std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task")) {
        std::ifstream status(task.path() / "status");
        std::string key;
        std::string name;
        std::string value;
        while (status >> key && std::getline(status >> std::ws, value)) {
            if (key == "Name:") name = value;
            if (key == "voluntary_ctxt_switches:") {
                result[name + "/" + task.path().filename().string()] = std::stol(value);
            }
        }
    }
    return result;
}

/// The threads of both processes that woke within two seconds, in words.
std::string awake(ApplicationScene& scene) {
    std::ostringstream text;
    const int pids[] = {scene.application().pid(), scene.driver().pid()};
    std::map<std::string, long> before[] = {switches(pids[0]), switches(pids[1])};
    (void)PrivateSession::waitFor([] { return false; }, std::chrono::seconds(2));
    for (int i = 0; i < 2; ++i) {
        for (const auto& [thread, count] : switches(pids[i])) {
            const long woken = count - before[i][thread];
            if (woken > 0) text << thread << " " << woken << " times; ";
        }
    }
    return text.str();
}

/// Waits until neither process wakes up; the session manager is busy for some seconds.
void expectRest(ApplicationScene& scene, const char* when) {
    std::string woken = "not looked yet";
    for (int attempt = 0; attempt < 8 && !woken.empty(); ++attempt)
        woken = awake(scene);
    EXPECT_EQ(woken, "") << when;
}

} // namespace

TEST(Idle, NothingWakesWhileNobodyPlaysAndTheFirstSoundIsWhole) {
    ApplicationScene scene;
    scene.writePresets(std::vector<float>(10, 0.0F));
    scene.startBoth();
    expectRest(scene, "before anybody played");
    for (int round = 0; round < 2; ++round) {
        const Recorder speakers(scene.session().serverSocket(), kSpeakers, 48000, 30.0,
                                Recorder::Sink::maySleep);
        const auto played = sine(997, 0.1F, 3);
        {
            const auto player = scene.play(played);
            EXPECT_TRUE(PrivateSession::waitFor([&] { return player->isFinished(); }));
        }
        const auto heard = speakers.recording().samples;
        // The second frame: a sine begins with silence.
        const auto first = std::ranges::search(
            heard, std::vector<float>(played.begin() + 2, played.begin() + 2 + 2000));
        EXPECT_FALSE(first.empty()) << "round " << round << ": begins with its beginning";
        expectRest(scene, "after the sound");
    }
}
