#include "Announcer.h"
#include "Cover.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <functional>

// When the media helper writes a line, in virtual time.

namespace halvo::helper {

namespace {

using std::chrono_literals::operator""ms;
using Time = Announcer::Time;

const std::string kRemote = "https://covers.example/1";
const std::string kData = "data:,one";

/// An announcer and its lines, each with its time in milliseconds.
class Scene {
  public:
    struct Line {
        long long at;
        Payload payload;
    };

    void plays(const std::string& title, const std::string& url = kData,
               const std::string& artist = "Artist", bool isPlaying = true) {
        announcer_.follow({title, artist, "", "", 0}, isPlaying, url, now_);
    }
    void fetched(const std::string& url, const std::string& base64) {
        announcer_.takeCover(url, base64, now_);
    }
    /// Calls it exactly when it asked to be called, until then.
    void pass(Time time) {
        const auto end = now_ + time;
        for (auto next = announcer_.wake(); next && *next <= end; next = announcer_.wake()) {
            now_ = std::max(now_, *next);
            look();
        }
        now_ = end;
    }
    void look() {
        if (const auto url = announcer_.coverToFetch(now_)) fetches.push_back(*url);
        if (const auto line = announcer_.lineToWrite(now_)) {
            lines.push_back(
                {std::chrono::duration_cast<std::chrono::milliseconds>(now_).count(), *line});
        }
    }
    bool isQuiet() const { return !announcer_.wake(); }

    std::vector<Line> lines;
    std::vector<std::string> fetches;

  private:
    Announcer announcer_;
    Time now_{0};
};

} // namespace

TEST(Announcer, ALineWaitsForWhatBelongsToIt) {
    struct Case {
        const char* name;
        std::function<void(Scene&)> story; ///< begins with track 0 on the air, at 1000 ms
        std::vector<long long> times;
        std::string title;
        std::string artwork;
    };
    const Case cases[]{
        {"complete", [](Scene& s) { s.plays("1", "data:,two"); }, {1050}, "1", "dHdv"},
        {"a cover within 300 ms",
         [](Scene& s) {
             s.plays("1", "");
             s.pass(290ms);
             s.plays("1", "data:,two");
         },
         {1290},
         "1",
         "dHdv"},
        {"the cover of the track before, for a moment",
         [](Scene& s) {
             s.plays("1");
             s.pass(200ms);
             s.plays("1", "data:,two");
         },
         {1200},
         "1",
         "dHdv"},
        {"the same cover again", [](Scene& s) { s.plays("1"); }, {1300}, "1", "b25l"},
        {"an artist within 300 ms",
         [](Scene& s) {
             s.plays("file.mp3", "data:,two", "");
             s.pass(100ms);
             s.plays("1", "data:,two");
         },
         {1100},
         "1",
         "dHdv"},
        {"no cover", [](Scene& s) { s.plays("1", ""); }, {1300}, "1", ""},
        {"fetched in time",
         [](Scene& s) {
             s.plays("1", kRemote);
             s.pass(400ms);
             s.fetched(kRemote, "AAEC");
         },
         {1400},
         "1",
         "AAEC"},
        {"fetched in vain",
         [](Scene& s) {
             s.plays("1", kRemote);
             s.pass(400ms);
             s.fetched(kRemote, "");
         },
         {1400},
         "1",
         ""},
        {"fetched late: in a line of its own",
         [](Scene& s) {
             s.plays("1", kRemote);
             s.pass(1500ms);
             s.fetched(kRemote, "AAEC");
         },
         {2000, 2550},
         "1",
         "AAEC"},
        {"fetched for a track that is gone",
         [](Scene& s) {
             s.plays("1", kRemote);
             s.pass(60ms);
             s.plays("2", "data:,two");
             s.fetched(kRemote, "AAEC");
         },
         {1060},
         "2",
         "dHdv"},
        {"paused: no cover again",
         [](Scene& s) { s.plays("0", kData, "Artist", false); },
         {1050},
         "0",
         ""},
        {"paused and on again",
         [](Scene& s) {
             s.plays("0", kData, "Artist", false);
             s.pass(30ms);
             s.plays("0");
         },
         {},
         "0",
         "b25l"},
        {"over", [](Scene& s) { s.plays("", "", ""); }, {1050}, "", ""},
    };
    for (const auto& [name, story, times, title, artwork] : cases) {
        Scene scene;
        scene.plays("0");
        scene.pass(1000ms);
        ASSERT_EQ(scene.lines.size(), 1U) << name;
        story(scene);
        scene.pass(5000ms);
        std::vector<long long> seen;
        for (const auto& line : scene.lines)
            seen.push_back(line.at);
        seen.erase(seen.begin());
        EXPECT_EQ(seen, times) << name;
        EXPECT_EQ(scene.lines.back().payload.track.title, title) << name;
        EXPECT_EQ(scene.lines.back().payload.artwork, artwork) << name;
        EXPECT_TRUE(scene.isQuiet()) << name;
    }
}

TEST(Announcer, AFloodIsAFewLinesAndNoFetches) {
    Scene scene;
    for (int i = 0; i < 1000; ++i) {
        scene.plays(std::to_string(i), "https://covers.example/" + std::to_string(i));
        scene.pass(1ms);
    }
    EXPECT_LE(scene.lines.size(), 20U);
    EXPECT_TRUE(scene.fetches.empty());
    scene.pass(5000ms);
    EXPECT_EQ(scene.lines.back().payload.track.title, "999");
    EXPECT_EQ(scene.fetches, std::vector<std::string>{"https://covers.example/999"});
}

TEST(Announcer, SaysOnceThatNothingPlaysWhenNoPlayerIsFound) {
    Scene scene;
    scene.plays("", "", "", false);
    scene.pass(5000ms);
    ASSERT_EQ(scene.lines.size(), 1U);
    EXPECT_EQ(scene.lines[0].at, 500);
    EXPECT_EQ(nlohmann::json::parse(lineFor(scene.lines[0].payload)),
              (nlohmann::json{{"type", "data"}, {"payload", {{"isPlaying", false}}}}));
}

TEST(Cover, IsReadFromWhatAnAddressHolds) {
    const auto folder = std::filesystem::temp_directory_path() / "halvo cover test";
    std::filesystem::create_directories(folder);
    const auto write = [&](const char* name, const std::string& bytes) {
        std::ofstream(folder / name, std::ios::binary) << bytes;
    };
    write("a b%41#.png", "file");
    write("large", std::string(kLargestCover + 1, 'x'));
    write("empty", "");
    const std::string base = "file://" + folder.string();
    struct Case {
        std::string url;
        std::string base64;
    };
    const Case cases[]{
        {base + "/a%20b%2541%23.png", "ZmlsZQ=="},
        {base + "/a b%2541#.png", "ZmlsZQ=="}, // a player that does not encode
        {"file://localhost" + folder.string() + "/a%20b%2541%23.png", "ZmlsZQ=="},
        {"FILE:" + folder.string() + "/a%20b%2541%23.png", "ZmlsZQ=="},
        {"file://elsewhere" + folder.string() + "/a%20b%2541%23.png", ""},
        {base + "/large", ""},
        {base + "/empty", ""},
        {base, ""},
        {"file:///dev/zero", ""},
        {"data:image/png;base64,AAEC", "AAEC"},
        {"data:image/png;base64,AA%2BC", "AA+C"},
        {"data:image/png;base64,AA EC\n", "AAEC"},
        {"data:image/png;base64,AAE", ""},
        {"data:image/png;base64,A*EC", ""},
        {"data:image/png;base64,", ""},
        {"data:text/plain,%00a", "AGE="},
        {"data:nothing", ""},
        {"https://example.com/cover", ""},
        {"", ""},
    };
    for (const auto& [url, base64] : cases)
        EXPECT_EQ(localCover(url), base64) << url;
    std::filesystem::remove_all(folder);
}

} // namespace halvo::helper
