#include "linux/pipewire/PipeWireOutputUnit.h"
#include "linux_audio/ServerFixture.h"
#include "linux_audio/TestSignal.h"
#include "session/ServerView.h"

#include <csignal>
#include <thread>

namespace halvo {
namespace {

class OutputUnitTest : public ServerFixture {
  protected:
    void configure(PipeWireOutputUnit& unit, TestSignal& signal, double rate = 48000) {
        ASSERT_TRUE(unit.setStreamFormat({rate, 2}));
        ASSERT_TRUE(unit.setRenderCallback(TestSignal::render, &signal));
        ASSERT_TRUE(unit.initialize());
    }
    /// Waits for this many more frames on the server's clock.
    bool plays(const PipeWireOutputUnit& unit, std::uint64_t frames) {
        const auto target = unit.framesPlayed() + frames;
        return waitFor([&] { return unit.framesPlayed() >= target; });
    }
    /// Also keeps the device awake: for a unit alone it sleeps.
    std::unique_ptr<session::Recorder> record(const std::string& uid) {
        auto recorder =
            std::make_unique<session::Recorder>(session_->serverSocket(), uid, 48000, 20.0);
        EXPECT_TRUE(waitFor([&] { return recorder->isRunning(); }));
        return recorder;
    }

    OutputGate gate_;
    TestSignal signal_;
};

TEST_F(OutputUnitTest, PlaysToItsDeviceBitForBit) {
    const auto recorderA = record("acc.a");
    const auto recorderB = record("acc.b");
    PipeWireOutputUnit unit(*connection_, gate_);
    configure(unit, signal_);
    ASSERT_TRUE(unit.setDevice(device("acc.b")));
    EXPECT_TRUE(unit.start());
    ASSERT_TRUE(plays(unit, 48000));
    const auto enough = recorderB->frames() + 4096;
    ASSERT_TRUE(waitFor([&] { return recorderB->frames() >= enough; }));
    EXPECT_TRUE(unit.stop());

    const auto recording = recorderB->recording();
    const auto match = TestSignal::match(recording);
    EXPECT_EQ(match.wrongFrames, 0U);
    EXPECT_GT(match.exactFrames, 40000U);
    // A busy machine may miss a cycle; nothing else may interrupt the signal.
    if (recording.lostFrames() == 0 && unit.underruns() == 0) {
        EXPECT_EQ(match.jumps, 0U);
    }
    EXPECT_EQ(recorderA->recording().peak(), 0.0F) << "the default output stays silent";
    EXPECT_FALSE(hardware_->hasForeignStreams(device("acc.b"))) << "its own is not foreign";
}

TEST_F(OutputUnitTest, WithoutADevicePlaysToTheDefaultButNeverToHalvosOwn) {
    ASSERT_TRUE(session_->plug({"HalvoVirtualOutput_UID", "Halvo Virtual Output"}));
    ASSERT_TRUE(session_->setDefault("HalvoVirtualOutput_UID"));
    ASSERT_TRUE(waitFor([&] {
        return hardware_->defaultOutput() == hardware_->deviceForUID("HalvoVirtualOutput_UID");
    }));
    PipeWireOutputUnit unit(*connection_, gate_);
    configure(unit, signal_);
    EXPECT_FALSE(unit.start());
    // Timed by another unit's cycles: this one could have played.
    TestSignal otherSignal;
    const auto awake = record("acc.a");
    PipeWireOutputUnit other(*connection_, gate_);
    configure(other, otherSignal);
    ASSERT_TRUE(other.setDevice(device("acc.a")));
    ASSERT_TRUE(other.start());
    ASSERT_TRUE(plays(other, 20000));
    EXPECT_EQ(unit.framesPlayed(), 0U);
    EXPECT_TRUE(other.stop());

    const auto recorder = record("acc.b");
    ASSERT_TRUE(session_->setDefault("acc.b"));
    EXPECT_TRUE(plays(unit, 10000)) << "as soon as there is another default";
    EXPECT_TRUE(waitFor([&] { return recorder->recording().peak() > 0; }));
}

TEST_F(OutputUnitTest, IsStillOnceStopReturns) {
    // A handler that lets a system call return early, as that of an ended child may.
    struct sigaction handler{};
    handler.sa_handler = [](int) {};
    ASSERT_EQ(::sigaction(SIGUSR1, &handler, nullptr), 0);
    const auto thread = ::pthread_self();
    const auto awake = record("acc.a");
    PipeWireOutputUnit unit(*connection_, gate_);
    configure(unit, signal_);
    ASSERT_TRUE(unit.setDevice(device("acc.a")));
    for (int i = 0; i < 5; ++i) {
        // In the middle of a cycle, the worst case.
        signal_.held = true;
        ASSERT_TRUE(unit.start());
        ASSERT_TRUE(waitFor([&] { return signal_.inside.load(); }));
        std::thread release([&] {
            // Time for `stop` to block; correctness does not depend on it.
            for (int k = 0; k < 2000; ++k) {
                if (k % 100 == 0) (void)::pthread_kill(thread, SIGUSR1);
                std::this_thread::yield();
            }
            signal_.held = false;
        });
        EXPECT_TRUE(unit.stop());
        EXPECT_FALSE(signal_.inside);
        release.join();
        const auto played = unit.framesPlayed();
        TestSignal otherSignal;
        PipeWireOutputUnit other(*connection_, gate_);
        configure(other, otherSignal);
        ASSERT_TRUE(other.start());
        ASSERT_TRUE(plays(other, 4096)) << "cycles in which nothing may happen";
        EXPECT_EQ(unit.framesPlayed(), played);
    }
}

TEST_F(OutputUnitTest, MovesWhenItIsBuiltAnew) {
    const auto recorder = record("acc.a");
    const auto awake = record("acc.b");
    for (const char* uid : {"acc.a", "acc.b", "acc.a"}) {
        auto unit = PipeWireOutputUnitFactory(*connection_, gate_).makeOutputUnit();
        auto& built = dynamic_cast<PipeWireOutputUnit&>(*unit);
        configure(built, signal_);
        ASSERT_TRUE(built.setDevice(device(uid)));
        ASSERT_TRUE(built.start());
        ASSERT_TRUE(plays(built, 8192)) << uid;
    }
    EXPECT_EQ(TestSignal::match(recorder->recording()).wrongFrames, 0U);
}

TEST_F(OutputUnitTest, ComesBackWithItsDevice) {
    ASSERT_TRUE(session_->plug({"usb", "USB"}));
    ASSERT_TRUE(waitFor([&] { return hardware_->deviceForUID("usb").has_value(); }));
    PipeWireOutputUnit unit(*connection_, gate_);
    configure(unit, signal_);
    ASSERT_TRUE(unit.setDevice(device("usb")));
    ASSERT_TRUE(unit.start());
    auto awake = record("usb");
    ASSERT_TRUE(plays(unit, 8192));
    for (int i = 0; i < 3; ++i) {
        const auto recorderA = record("acc.a");
        ASSERT_TRUE(session_->unplug("usb"));
        ASSERT_TRUE(waitFor([&] { return !hardware_->deviceForUID("usb"); }));
        ASSERT_TRUE(session_->plug({"usb", "USB"}));
        awake = record("usb");
        EXPECT_TRUE(plays(unit, 8192)) << i;
        EXPECT_EQ(recorderA->recording().peak(), 0.0F) << "nothing moved to another device";
    }
}

TEST_F(OutputUnitTest, AsksForASecondMoreWhenItsDeviceFallsAsleep) {
    std::atomic<int> rests{0};
    std::atomic<bool> flows{false};
    PipeWireOutputUnit unit(*connection_, gate_, [&](bool now) {
        if (flows.exchange(now) && !now) ++rests;
    });
    configure(unit, signal_);
    ASSERT_TRUE(unit.setDevice(device("acc.b")));
    ASSERT_TRUE(unit.start());
    for (int round = 1; round <= 2; ++round) {
        auto awake = record("acc.b");
        ASSERT_TRUE(plays(unit, 4096)) << round;
        EXPECT_TRUE(flows);
        awake.reset();
        const auto played = unit.framesPlayed();
        const std::uint64_t asked = signal_.next;
        ASSERT_TRUE(waitFor([&] { return rests == round; }));
        EXPECT_GE(signal_.next - asked, 40000U) << "for meters to fall";
        EXPECT_LE(unit.framesPlayed() - played, 4096U) << "and nothing of it is played";
    }
}

TEST_F(OutputUnitTest, StaysAtUnityWhateverOthersSet) {
    const auto view = session::ServerView::connect(session_->serverSocket());
    ASSERT_TRUE(view);
    ASSERT_TRUE(session_->wake("acc.a")); // its mute is waited for below
    PipeWireOutputUnit unit(*connection_, gate_);
    configure(unit, signal_);
    ASSERT_TRUE(unit.setDevice(device("acc.b")));
    ASSERT_TRUE(unit.start());
    const auto recorder = record("acc.b");
    ASSERT_TRUE(plays(unit, 4096));
    ASSERT_TRUE(waitFor([&] { return view->node("halvo").has_value(); }));
    ASSERT_TRUE(view->setVolume("halvo", {0.25F, 0.25F}));
    ASSERT_TRUE(view->setMuted("halvo", true));
    // Requests are handled in order: once this one takes effect, the others have been handled.
    ASSERT_TRUE(view->setMuted("acc.a", true));
    ASSERT_TRUE(waitFor([&] { return view->node("acc.a")->muted; }));
    EXPECT_TRUE(waitFor([&] {
        const auto node = view->node("halvo");
        return node && !node->muted && node->volumes == std::vector<float>{1, 1};
    }));
    recorder->clear();
    ASSERT_TRUE(waitFor([&] { return recorder->frames() >= 8192; }));
    EXPECT_EQ(TestSignal::match(recorder->recording()).wrongFrames, 0U);
}

TEST_F(OutputUnitTest, IsResampledToAnotherRate) {
    const auto recorder = record("acc.b");
    PipeWireOutputUnit unit(*connection_, gate_);
    configure(unit, signal_, 44100);
    ASSERT_TRUE(unit.setDevice(device("acc.b")));
    const auto first = recorder->frames();
    ASSERT_TRUE(unit.start());
    ASSERT_TRUE(plays(unit, 44100));
    const auto frames = static_cast<double>(recorder->frames() - first);
    EXPECT_NEAR(static_cast<double>(unit.framesPlayed()) / frames, 44100.0 / 48000, 0.1);
}

TEST_F(OutputUnitTest, RefusesWhatItCannotPlay) {
    PipeWireOutputUnit unit(*connection_, gate_);
    EXPECT_FALSE(unit.initialize());
    EXPECT_FALSE(unit.start());
    for (const StreamFormat& format :
         {StreamFormat{48000, 0}, {48000, 65}, {0, 2}, {-1, 2}, {1e300, 2}}) {
        EXPECT_FALSE(unit.setStreamFormat(format)) << format.sampleRate << " " << format.channels;
    }
    EXPECT_FALSE(unit.setDevice(device("acc.a") + 1000));
    EXPECT_FALSE(unit.setRenderCallback(nullptr, nullptr));
}

} // namespace
} // namespace halvo
