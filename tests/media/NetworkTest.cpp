#include "fake/FakeServices.h"
#include "media/BusScene.h"
#include "media/TagServer.h"
#include "nowplaying/LastFMClient.h"
#include "qt/QtHTTPSession.h"
#include "qt/QtMainQueue.h"
#include "qt/QtUnicodeText.h"

#include <QCoreApplication>
#include <QTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

// Requests over the real network library to a real server, and what the tag lookup makes of them.

namespace halvo::test {

namespace {

using media::TagServer;
using Clock = std::chrono::steady_clock;
using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;

/// Runs the main loop until the condition holds; false after fifteen seconds.
bool loopUntil(const std::function<bool()>& condition) {
    const auto end = Clock::now() + 15s;
    while (!condition()) {
        if (Clock::now() > end) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

/// The longest scheduling delay of a thread that only sleeps: the machine's own share in every
/// delay.
class MachineDelay {
  public:
    MachineDelay()
        : thread_([this] {
              while (!ends_) {
                  const auto begin = Clock::now();
                  std::this_thread::sleep_for(1ms);
                  longest_ = std::max(longest_, Clock::now() - begin);
              }
          }) {}
    ~MachineDelay() { (void)finish(); }
    MachineDelay(const MachineDelay&) = delete;
    MachineDelay& operator=(const MachineDelay&) = delete;

    Clock::duration finish() {
        ends_ = true;
        if (thread_.joinable()) thread_.join();
        return longest_;
    }

  private:
    std::atomic<bool> ends_{false};
    Clock::duration longest_{};
    std::thread thread_;
};

/// The longest time between two iterations of the main loop.
class MainLoopDelay {
  public:
    MainLoopDelay() {
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] {
            const auto now = Clock::now();
            longest_ = std::max(longest_, now - last_);
            last_ = now;
        });
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.start(1ms);
    }
    Clock::duration longest() const { return longest_; }

  private:
    QTimer timer_;
    Clock::time_point last_ = Clock::now();
    Clock::duration longest_{};
};

struct Outcome {
    std::optional<HTTPResponse> response;
    Clock::duration time{};
};

Outcome fetch(QtHTTPSession& session, const HTTPRequest& request) {
    Outcome outcome;
    bool over = false;
    const auto begin = Clock::now();
    session.get(request, [&](std::optional<HTTPResponse> response) {
        outcome = {std::move(response), Clock::now() - begin};
        over = true;
    });
    EXPECT_FALSE(over) << "never within the call";
    EXPECT_TRUE(loopUntil([&] { return over; }));
    return outcome;
}

} // namespace

TEST(Network, EveryExchangeIsOverInTimeAndHoldsUpNothing) {
    using enum TagServer::Behaviour;
    struct Case {
        const char* name;
        TagServer::Behaviour behaviour;
        int status; ///< 0: no answer
    };
    const Case cases[]{
        {"answers", answers, 200},  {"page", page, 200}, {"server error", serverError, 500},
        {"too large", tooLarge, 0}, {"drips", drips, 0}, {"hangs", hangs, 0}};
    TagServer service;
    QtHTTPSession session;
    MachineDelay machine;
    const MainLoopDelay mainLoop;
    for (const auto& [name, behaviour, status] : cases) {
        service.setBehaviour(behaviour);
        const auto outcome = fetch(session, {service.address() + "/", "Halvo/test", 2s, 1 << 18});
        EXPECT_EQ(outcome.response ? outcome.response->status : 0, status) << name;
        EXPECT_LT(outcome.time, 2s + 500ms) << name;
        EXPECT_EQ(service.requests().back().userAgent, "Halvo/test");
    }
    EXPECT_LT(mainLoop.longest(), std::max<Clock::duration>(16ms, 2 * machine.finish()));
}

TEST(Network, WithoutTrustOrAServerThereIsNoAnswer) {
    BusScene scene;
    const auto key = scene.directory() + "/tmp/key.pem";
    const auto certificate = scene.directory() + "/tmp/certificate.pem";
    auto maker = scene.spawn({"openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days",
                              "2", "-subj", "/CN=127.0.0.1", "-addext",
                              "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out", certificate});
    ASSERT_EQ(maker->wait(20s), 0);
    QtHTTPSession session;
    std::string nobody;
    {
        const TagServer secure(TagServer::Identity{certificate, key});
        MachineDelay machine;
        const MainLoopDelay mainLoop;
        const auto outcome = fetch(session, {secure.address() + "/", "", 5s, 1000});
        EXPECT_FALSE(outcome.response) << "the certificate is not trusted";
        EXPECT_LT(outcome.time, 4s) << "refused, not timed out";
        EXPECT_TRUE(secure.requests().empty());
        EXPECT_LT(mainLoop.longest(), std::max<Clock::duration>(16ms, 2 * machine.finish()));
        nobody = TagServer().address();
    }
    EXPECT_FALSE(fetch(session, {nobody + "/", "", 5s, 1000}).response) << "refused";
    for (const auto* address : {"file:///etc/hostname", "", "http://", "nonsense"})
        EXPECT_FALSE(fetch(session, {address, "", 5s, 1000}).response) << address;
}

TEST(Network, TagsArriveWhateverTheArtistIsCalled) {
    const std::string origin = "https://ws.audioscrobbler.com";
    TagServer service;
    QtHTTPSession session(origin, service.address());
    QtMainQueue queue;
    const QtUnicodeText unicode;
    FakeSystemLog log;
    LastFMClient client(session, queue, unicode, log);
    const auto tagsOf = [&](const std::string& artist) {
        std::optional<std::vector<std::string>> tags;
        const auto asker = client.getArtistTags(artist, [&](const auto& found) { tags = found; });
        EXPECT_TRUE(loopUntil([&] { return tags.has_value(); })) << artist;
        return tags.value_or(std::vector<std::string>());
    };
    const std::vector<std::string> artists{"Simon & Garfunkel", "Who? #1/2 100% +=;",
                                           "Сплин — 椎名林檎"};
    for (const auto& artist : artists) {
        service.setTags(artist, {{"Rock", 100}, {"Rare", 29}});
        EXPECT_EQ(tagsOf(artist), std::vector<std::string>{"rock"}) << artist;
    }
    EXPECT_EQ(service.requests().front().target,
              "/2.0/?method=artist.gettoptags&artist=Simon%20%26%20Garfunkel&api_key="
              "5b2e9d07a41c86f3e0d9b7a2c4f61e88&format=json");
    EXPECT_TRUE(service.requests().front().userAgent.starts_with("Halvo/"));

    using enum TagServer::Behaviour;
    for (const auto behaviour : {countsAsText, errorInside, page, serverError, tooLarge}) {
        service.setBehaviour(behaviour);
        const auto artist = "Artist " + std::to_string(static_cast<int>(behaviour));
        service.setTags(artist, {{"Rock", 100}});
        EXPECT_TRUE(tagsOf(artist).empty()) << artist;
    }
    EXPECT_EQ(service.requests().size(), artists.size() + 5);
}

} // namespace halvo::test
