#include "audio/SharedRingBufferReader.h"
#include "fake/FakeSharedMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <random>

using namespace halvo;

namespace {

constexpr std::uint64_t kMaximumIndex = std::numeric_limits<std::uint64_t>::max();

/// A connected reader on a ring of known size.
class RingReader : public testing::Test {
  protected:
    void open(std::uint32_t capacity, std::uint32_t channels = 1) {
        memory.createRing(48000, channels, capacity);
        ASSERT_TRUE(reader.connect());
    }
    void setIndices(std::uint64_t written, std::uint64_t read) {
        memory.header().writeIndex = written;
        memory.header().readIndex = read;
    }
    std::vector<float> read(std::int64_t frames, std::uint32_t channels = 1) {
        std::vector<float> out(static_cast<std::size_t>(frames) * channels, -1.0F);
        const auto got = reader.readFrames(out.data(), frames, channels);
        out.resize(static_cast<std::size_t>(got) * channels);
        return out;
    }

    FakeSharedMemory memory;
    SharedRingBufferReader reader{memory};
};

} // namespace

TEST_F(RingReader, StartsAtNowAndReadsWhatIsWrittenAfterwards) {
    memory.createRing(48000, 2, 8);
    memory.write(std::vector<float>(10, 0.25F));
    ASSERT_TRUE(reader.connect());
    EXPECT_TRUE(read(8, 2).empty());
    memory.write(std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}); // straddles the end
    EXPECT_EQ(read(8, 2), (std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(memory.header().readIndex, 10U);
    EXPECT_EQ(memory.openedNames.front(), "/halvo_audio_ring");
}

TEST_F(RingReader, ConnectsOnceAndFailsCleanly) {
    EXPECT_FALSE(reader.connect());
    EXPECT_LT(reader.fd, 0);
    memory.createObject(0);
    EXPECT_FALSE(reader.connect()) << "an empty object";
    EXPECT_EQ(reader.fd, -1);
    open(8);
    EXPECT_TRUE(reader.connect());
    EXPECT_EQ(memory.mapped, 1);
    reader.disconnect();
    EXPECT_EQ(memory.mapped, 0);
    EXPECT_EQ(memory.opened, 0);
    memory.sizeFails = true;
    EXPECT_FALSE(reader.connect());
    memory.sizeFails = false;
    memory.mapFails = true;
    EXPECT_FALSE(reader.connect());
    EXPECT_EQ(reader.fd, -1);
    EXPECT_EQ(memory.opened, 0);
}

TEST_F(RingReader, FallingBehindByMoreThanARingLeavesHalfARing) {
    struct Row {
        std::uint32_t capacity;
        std::uint64_t ahead;
        std::int64_t frames;
    };
    for (const auto& [capacity, ahead, frames] :
         {Row{8192, 8192, 8192}, Row{8192, 8193, 4096}, Row{8192, 8191, 8191}, Row{5, 6, 2},
          Row{8192, kMaximumIndex - 20, 4096}}) {
        reader.disconnect();
        open(capacity);
        setIndices(20 + ahead, 20);
        EXPECT_EQ(reader.readFrames(std::vector<float>(9000).data(), 9000, 1), frames)
            << capacity << " ahead by " << ahead;
        EXPECT_EQ(memory.header().readIndex, 20 + ahead);
    }
}

TEST_F(RingReader, TheJumpIsStoredEvenIfFewerFramesAreTaken) {
    open(8);
    setIndices(109, 100);
    EXPECT_EQ(read(1).size(), 1U);
    EXPECT_EQ(memory.header().readIndex, 106U); // 109 − 4 + 1
}

TEST_F(RingReader, ARestartedWriterPullsTheReaderBack) {
    open(8);
    setIndices(0, 500);
    EXPECT_TRUE(read(4).empty());
    EXPECT_EQ(memory.header().readIndex, 0U);
}

TEST_F(RingReader, AHeaderThatDoesNotFitIsNotReadyAndTouchesNothing) {
    struct Row {
        const char* name;
        std::uint32_t capacity;
        std::uint32_t channels;
    };
    for (const auto& [name, capacity, channels] :
         {Row{"no capacity", 0, 2}, Row{"endless capacity", 0xFFFFFFFF, 2},
          Row{"one frame too many", 65, 2}, Row{"no channels", 64, 0},
          Row{"half of all channels", 64, 0x80000000}, Row{"other channel count", 16, 8}}) {
        reader.disconnect();
        open(64, 2);
        setIndices(5, 10); // would be pulled back if it were touched
        memory.header().capacity = capacity;
        memory.header().channelCount = channels;
        std::vector<float> out(64, 7.0F);
        EXPECT_EQ(reader.readFrames(out.data(), 32, 2), 0) << name;
        EXPECT_EQ(memory.header().readIndex, 10U) << name;
        EXPECT_EQ(std::ranges::count(out, 7.0F), 64) << name;
    }
    reader.disconnect();
    memory.createObject(39);
    ASSERT_TRUE(reader.connect());
    EXPECT_TRUE(read(4).empty()) << "shorter than a header";
    EXPECT_FALSE(reader.format());
}

TEST_F(RingReader, AMillionHostileHeadersStayInsideTheMapping) {
    open(64, 2);
    std::mt19937_64 random(42);
    const auto hostile = [&](std::uint64_t small) -> std::uint64_t {
        switch (random() % 5) {
        case 0:
            return random() % (small * 2 + 1);
        case 1:
            return 0;
        case 2:
            return kMaximumIndex - random() % 3;
        case 3:
            return random();
        default:
            return small;
        }
    };
    std::vector<float> out(256 * 2);
    for (int round = 0; round < 1'000'000; ++round) {
        auto& header = memory.header();
        setIndices(hostile(64), hostile(64));
        header.capacity = static_cast<std::uint32_t>(hostile(64));
        header.channelCount = static_cast<std::uint32_t>(hostile(2));
        header.sampleRate = static_cast<std::uint32_t>(hostile(48000));
        const auto limit = static_cast<std::int64_t>(random() % 257);
        const auto got = reader.readFrames(out.data(), limit, 2);
        ASSERT_LE(got, limit);
        ASSERT_LE(got, 64);
        (void)reader.format();
    }
}

TEST_F(RingReader, ANegativeFrameCountEndsTheProcess) {
    open(8);
    float sample = 0;
    EXPECT_DEATH((void)reader.readFrames(&sample, -1, 1), "");
}
