#include "session/PrivateSession.h"

#include "session/Player.h"
#include "session/Recorder.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace halvo::session;
namespace fs = std::filesystem;

std::unique_ptr<PrivateSession> createOrFail(Options options = {}) {
    auto session = PrivateSession::create(std::move(options));
    if (!session) ADD_FAILURE() << session.error();
    return session ? std::move(*session) : nullptr;
}

std::vector<float> constant(float level, std::size_t frames) {
    return std::vector<float>(frames * 2, level);
}

/// Whether a living process has the text in its environment.
bool somebodyKnows(const std::string& text) {
    for (const auto& entry : fs::directory_iterator("/proc")) {
        std::ifstream stream(entry.path() / "environ", std::ios::binary);
        const std::string environment{std::istreambuf_iterator<char>(stream),
                                      std::istreambuf_iterator<char>()};
        if (environment.find(text) != std::string::npos) return true;
    }
    return false;
}

TEST(PrivateSessionTests, LeavesNothingBehindHoweverItEnds) {
    for (const int signal : {SIGKILL, SIGTERM}) {
        SCOPED_TRACE(signal);
        const auto outer = createOrFail();
        ASSERT_NE(outer, nullptr);
        const auto program = outer->spawn({HALVO_SESSION, "--", "sh", "-c",
                                           "touch /dev/shm$HALVO_RING_NAME; setsid sleep 1000 & "
                                           "echo $XDG_RUNTIME_DIR $HALVO_RING_NAME; wait"});
        ASSERT_TRUE(program) << program.error();
        ASSERT_TRUE(
            PrivateSession::waitFor([&] { return (*program)->standardOutput().ends_with('\n'); }));
        const std::string said = (*program)->standardOutput();
        const std::string directory = fs::path(said.substr(0, said.find(' '))).parent_path();
        const std::string ring =
            "/dev/shm" + said.substr(said.find(' ') + 1, said.size() - said.find(' ') - 2);
        ASSERT_TRUE(fs::exists(directory) && fs::exists(ring)) << directory << " " << ring;
        EXPECT_TRUE(somebodyKnows(directory));

        (*program)->signal(signal);
        ASSERT_TRUE((*program)->wait(PrivateSession::kPatience));
        EXPECT_TRUE(PrivateSession::waitFor([&] {
            return !fs::exists(directory) && !fs::exists(ring) && !somebodyKnows(directory);
        }));
    }
}

TEST(PrivateSessionTests, PassesTheCommandsStatusOn) {
    const auto session = createOrFail();
    ASSERT_NE(session, nullptr);
    EXPECT_EQ(session->run({HALVO_SESSION, "--outputs", "0", "sh", "-c", "exit 7"}).status, 7);
    EXPECT_EQ(session->run({HALVO_SESSION, "--", "no-such-program"}).status, 127);
    EXPECT_EQ(session->run({HALVO_SESSION, "--rate", "x", "true"}).status, 2);
}

TEST(SpawnedProgramTests, RunsToTheEndAndSaysWhatFailed) {
    std::string log = fs::temp_directory_path() / "halvo-run-XXXXXX";
    ::close(::mkstemp(log.data()));
    std::ofstream(log) << "from an earlier run\n";
    // The work is done in a child of the program; its time counts.
    const auto done = SpawnedProgram::run(
        {"sh", "-c",
         "(i=0; while [ $i -lt 100000 ]; do i=$((i+1)); done); echo $PATH; echo two >&2"},
        log);
    ASSERT_TRUE(done) << done.error();
    EXPECT_EQ(done->output, std::string(std::getenv("PATH")) + "\ntwo\n");
    EXPECT_GT(done->cpuSeconds, 0);
    const auto failed = SpawnedProgram::run({"sh", "-c", "echo one; echo why; echo; exit 3"}, log);
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error(), "sh failed: why");
    const auto missing = SpawnedProgram::run({"halvo-no-such-program"}, log);
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error(), "halvo-no-such-program: No such file or directory");
    fs::remove(log);
}

TEST(PrivateSessionTests, SeveralSessionsDoNotHearEachOther) {
    const auto first = createOrFail();
    const auto second = createOrFail();
    ASSERT_TRUE(first && second);
    EXPECT_NE(first->ringName(), second->ringName());
    const Recorder inFirst(first->serverSocket(), "acc.a", 48000);
    const Recorder inSecond(second->serverSocket(), "acc.a", 48000);
    ASSERT_TRUE(
        PrivateSession::waitFor([&] { return inFirst.isRunning() && inSecond.isRunning(); }));
    const Player player(first->serverSocket(), constant(0.5F, 48000), 48000);
    EXPECT_TRUE(PrivateSession::waitFor([&] { return inFirst.recording().peak() == 0.5F; }));
    const auto frames = inSecond.frames();
    EXPECT_TRUE(PrivateSession::waitFor([&] { return inSecond.frames() > frames + 4096; }));
    EXPECT_EQ(inSecond.recording().peak(), 0.0F);
    ASSERT_TRUE(first->setDefault("acc.b"));
    EXPECT_EQ(second->defaultSink(), "acc.a");
    EXPECT_EQ(second->configuredDefault(), std::nullopt);
}

TEST(PrivateSessionTests, ARecorderHearsWhatTheOutputsLevelMakesOfTheSound) {
    const auto session = createOrFail();
    ASSERT_NE(session, nullptr);
    Recorder recorder(session->serverSocket(), "acc.a", 48000);
    const Player player(session->serverSocket(), constant(0.5F, 480000), 48000);
    const auto hears = [&](float left, float right) {
        return PrivateSession::waitFor([&] {
            recorder.clear();
            (void)PrivateSession::waitFor([&] { return recorder.isRunning(); });
            const auto& samples = recorder.recording().samples;
            return samples.size() > 1 && samples[samples.size() - 2] == left &&
                   samples.back() == right;
        });
    };
    EXPECT_TRUE(hears(0.5F, 0.5F));
    ASSERT_TRUE(session->setVolume("acc.a", {0.5F, 0.25F}));
    EXPECT_TRUE(hears(0.25F, 0.125F));
    ASSERT_TRUE(session->setMuted("acc.a", true));
    EXPECT_TRUE(hears(0.0F, 0.0F));
}

TEST(PrivateSessionTests, OutputsComeGoAndSurviveTheServer) {
    Options options;
    options.outputs = simulatedOutputs(1);
    options.outputs.front().volumes = {0.3F, 0.2F};
    const auto session = createOrFail(options);
    ASSERT_NE(session, nullptr);
    EXPECT_EQ(session->volume("acc.a"), (std::vector<float>{0.3F, 0.2F}));
    ASSERT_TRUE(session->plug({"usb", "USB", {0.125F, 0.125F}}));
    EXPECT_FALSE(session->plug({"usb", "USB"})) << "no twins";
    EXPECT_EQ(session->volume("usb"), (std::vector<float>{0.125F, 0.125F}));
    session->stopServer();
    EXPECT_TRUE(session->nodeNames().empty());
    ASSERT_TRUE(session->startServer());
    EXPECT_EQ(session->volume("usb"), (std::vector<float>{0.125F, 0.125F}));
    ASSERT_TRUE(session->setDefault("usb"));
    ASSERT_TRUE(session->unplug("usb"));
    EXPECT_TRUE(PrivateSession::waitFor([&] { return session->defaultSink() == "acc.a"; }));
    ASSERT_TRUE(session->unplug("acc.a"));
    EXPECT_TRUE(PrivateSession::waitFor([&] { return session->defaultSink().empty(); }));
}

} // namespace
