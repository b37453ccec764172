#include "nowplaying/LastFMClient.h"
#include "fake/FakeMainQueue.h"
#include "fake/FakeProcesses.h"
#include "fake/FakeServices.h"
#include "qt/QtUnicodeText.h"

#include <gtest/gtest.h>

#include <memory>

using namespace halvo;
using namespace std::chrono_literals;

namespace {

using Tags = std::vector<std::string>;
using Lines = std::vector<std::string>;

constexpr const char* kRock = R"({"toptags":{"tag":[{"name":"Rock","count":100}]}})";

class LastFM : public testing::Test {
  protected:
    FakeMainQueue queue;
    FakeHTTPSession session;
    FakeSystemLog log;
    QtUnicodeText unicode;
    std::unique_ptr<LastFMClient> client =
        std::make_unique<LastFMClient>(session, queue, unicode, log);
    std::vector<Tags> answers;
    std::vector<Subscription> askers; ///< in the order of their asking

    void ask(const std::string& artist) {
        askers.push_back(
            client->getArtistTags(artist, [this](const Tags& tags) { answers.push_back(tags); }));
    }
    std::size_t sent() const { return session.requests.size(); }
    /// The artists asked about so far.
    std::string sentArtists() const {
        std::string artists;
        for (const auto& request : session.requests) {
            const auto start = request.url.find("&artist=") + 8;
            artists += request.url.substr(start, request.url.find("&api_key=") - start) + " ";
        }
        return artists;
    }
};

} // namespace

TEST_F(LastFM, TheAddressKeepsTheArtistOneValue) {
    const std::pair<const char*, const char*> rows[] = {
        {"Simon & Garfunkel", "Simon%20%26%20Garfunkel"},
        {"Florence + the Machine", "Florence%20%2B%20the%20Machine"},
        {"a?b/c#d%e=f", "a%3Fb%2Fc%23d%25e%3Df"},
        {"Björk", "Bj%C3%B6rk"},
        {"椎名", "%E6%A4%8E%E5%90%8D"},
        {"A-z0.9_~", "A-z0.9_~"}};
    for (const auto& [artist, encoded] : rows) {
        ask(artist);
        queue.advance(1s);
        session.answer(std::nullopt);
        const auto& request = session.requests.back();
        EXPECT_EQ(request.url, std::string("https://ws.audioscrobbler.com"
                                           "/2.0/?method=artist.gettoptags&artist=") +
                                   encoded +
                                   "&api_key=5b2e9d07a41c86f3e0d9b7a2c4f61e88&format=json");
        EXPECT_TRUE(request.userAgent.starts_with("Halvo/")) << request.userAgent;
    }
}

TEST_F(LastFM, WhatAnAnswerGives) {
    struct Row {
        const char* name;
        std::optional<HTTPResponse> response;
        Tags tags;
        Lines log; ///< with %s%n%p for the artist
        bool isCached;
    };
    const Lines failed = {"Halvo: Last.fm request failed for '%s%n%p'"};
    const Row rows[] = {
        {"counts",
         HTTPResponse{200, R"({"toptags":{"tag":[{"name":"A","count":100},{"name":"B","count":45},
            {"name":"C","count":"99"},{"name":7,"count":80},{"count":80},{"name":"D","count":40.5},
            {"name":"E","count":30},{"name":"F","count":29},{"name":"G","count":0}]}})"},
         {"a", "b", "e"},
         {"Halvo: Last.fm tags for '%s%n%p': a, b, e"},
         true},
        {"none counts",
         HTTPResponse{200, R"({"toptags":{"tag":[]}})"},
         {},
         {"Halvo: Last.fm tags for '%s%n%p': "},
         true},
        {"eight in the log",
         HTTPResponse{200, R"({"toptags":{"tag":[{"name":"1","count":30},{"name":"2","count":30},
            {"name":"3","count":30},{"name":"4","count":30},{"name":"5","count":30},
            {"name":"6","count":30},{"name":"7","count":30},{"name":"8","count":30},
            {"name":"9","count":30}]}})"},
         {"1", "2", "3", "4", "5", "6", "7", "8", "9"},
         {"Halvo: Last.fm tags for '%s%n%p': 1, 2, 3, 4, 5, 6, 7, 8"},
         true},
        {"a tag that is no object",
         HTTPResponse{200, R"({"toptags":{"tag":[{"name":"A","count":100},7]}})"},
         {},
         {},
         false},
        {"one tag alone",
         HTTPResponse{200, R"({"toptags":{"tag":{"name":"A","count":100}}})"},
         {},
         {},
         false},
        {"error inside", HTTPResponse{200, R"({"error":29,"message":"slow"})"}, {}, {}, false},
        {"page", HTTPResponse{200, "<html>"}, {}, {}, false},
        {"status", HTTPResponse{500, kRock}, {}, failed, false},
        {"nothing", std::nullopt, {}, failed, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        client = std::make_unique<LastFMClient>(session, queue, unicode, log);
        answers.clear();
        log.lines.clear();
        ask("%s%n%p");
        session.answer(row.response);
        EXPECT_EQ(answers, (std::vector<Tags>{row.tags}));
        EXPECT_EQ(log.lines, row.log);
        const auto before = sent();
        ask("%S%N%P");
        queue.advance(1s);
        EXPECT_EQ(sent(), before + (row.isCached ? 0 : 1));
        if (!row.isCached) session.answer(std::nullopt);
    }
}

TEST_F(LastFM, SpellingsShareOneRequestAndOneEntry) {
    ask("Björk");
    ask("BJÖRK");
    ask("Bjo\u0308rk");
    queue.advance(3s);
    EXPECT_EQ(sent(), 1U);
    session.answer(HTTPResponse{200, kRock});
    EXPECT_EQ(answers, std::vector(3, Tags{"rock"}));
    log.lines.clear();
    ask("björk");
    EXPECT_EQ(answers.size(), 4U) << "at once";
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(LastFM, OneRequestASecondTheNewestFirstAndEachHasItsFiveSeconds) {
    ask("a");
    EXPECT_EQ(sent(), 1U);
    queue.advance(300ms);
    for (const char* artist : {"b", "c", "d", "e", "f", "g", "h", "c"})
        ask(artist);
    queue.advance(699ms);
    EXPECT_EQ(sent(), 1U);
    queue.advance(1ms);
    EXPECT_EQ(sent(), 2U);
    for (std::size_t i = 3; i <= 8; ++i) {
        queue.advance(999ms);
        EXPECT_EQ(sent(), i - 1);
        queue.advance(1ms);
        EXPECT_EQ(sent(), i);
    }
    EXPECT_EQ(sentArtists(), "a c h g f e d b ");
    for (const auto& request : session.requests)
        EXPECT_EQ(request.timeout, 5s);
    queue.advance(1min);
    EXPECT_EQ(sent(), 8U);
    EXPECT_TRUE(answers.empty());
    EXPECT_TRUE(log.lines.empty()) << "none has failed";
    for (std::size_t i = 0; i < sent(); ++i)
        session.answer(std::nullopt);
    EXPECT_EQ(answers.size(), 9U) << "c was asked for twice";
    ask("g");
    EXPECT_EQ(sent(), 9U) << "a failure is tried anew, and the service has rested";
}

TEST_F(LastFM, WhoeverNoLongerWaitsGivesUpTheirPlace) {
    ask("a");
    ask("b");
    ask("c");
    ask("d");
    ask("D");
    askers[2].cancel();
    askers[3].cancel();
    queue.advance(1s);
    EXPECT_EQ(sentArtists(), "a d ") << "somebody else waits for d";
    queue.advance(1s);
    EXPECT_EQ(sentArtists(), "a d b ");
    askers[0].cancel();
    session.answer(HTTPResponse{200, kRock});
    EXPECT_TRUE(answers.empty()) << "nobody waits for a";
    ask("a");
    EXPECT_EQ(answers, std::vector(1, Tags{"rock"})) << "but its answer is known";
    session.answer(HTTPResponse{200, kRock});
    EXPECT_EQ(answers.size(), 2U);
    ask("e");
    askers.back().cancel();
    ask("e");
    queue.advance(1s);
    EXPECT_EQ(sentArtists(), "a d b e ") << "asked for anew";
    ask("f");
    askers.back().cancel();
    queue.advance(1min);
    EXPECT_EQ(sentArtists(), "a d b e ");
    EXPECT_EQ(log.lines,
              (Lines{"Halvo: Last.fm tags for 'a': rock", "Halvo: Last.fm tags for 'd': rock"}));
    ask("c");
    EXPECT_EQ(sent(), 5U);
}

TEST_F(LastFM, AnAskerMayOutliveTheClientAndGoInItsOwnAnswer) {
    askers.push_back(client->getArtistTags("a", [this](const Tags& tags) {
        askers.clear();
        answers.push_back(tags);
    }));
    ask("a");
    session.answer(HTTPResponse{200, kRock});
    EXPECT_EQ(answers, std::vector(1, Tags{"rock"})) << "the first let the second go, too";
    ask("b");
    client.reset();
    askers.clear();
    queue.advance(1min);
    EXPECT_EQ(sent(), 1U);
}
