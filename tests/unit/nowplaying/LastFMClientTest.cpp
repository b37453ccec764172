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

    void ask(const std::string& artist) {
        client->getArtistTags(artist, [this](const Tags& tags) { answers.push_back(tags); });
    }
    std::size_t sent() const { return session.requests.size(); }
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

TEST_F(LastFM, OneRequestASecondAndFiveSecondsInAll) {
    ask("a");
    EXPECT_EQ(sent(), 1U);
    EXPECT_EQ(session.requests[0].timeout, 5s);
    queue.advance(300ms);
    for (const char* artist : {"b", "c", "d", "e", "f", "g", "h"})
        ask(artist);
    queue.advance(699ms);
    EXPECT_EQ(sent(), 1U);
    queue.advance(1ms);
    EXPECT_EQ(sent(), 2U);
    EXPECT_EQ(session.requests[1].timeout, 4300ms);
    queue.advance(4s);
    EXPECT_EQ(sent(), 6U);
    EXPECT_EQ(session.requests[5].timeout, 300ms);
    queue.advance(299ms);
    EXPECT_TRUE(answers.empty());
    queue.advance(1ms);
    EXPECT_EQ(sent(), 6U);
    EXPECT_EQ(answers, (std::vector<Tags>(2))) << "g and h waited too long";
    EXPECT_EQ(log.lines, (Lines{"Halvo: Last.fm request failed for 'g'",
                                "Halvo: Last.fm request failed for 'h'"}));
    ask("g");
    queue.advance(1s);
    EXPECT_EQ(sent(), 7U) << "a failure is tried anew";
}
