#include "driver/macos/FreeRunningBacklogLimiter.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace {

using halvo::driver::BacklogLimiter;
using halvo::driver::FreeRunningBacklogLimiter;

/// A writer and a reader with cycles of their own, counted in frames of one clock.
struct Meeting {
    std::size_t block;
    std::uint64_t readSize;
    FreeRunningBacklogLimiter limiter = {};
    BacklogLimiter::Indices indices = {};
    std::uint64_t readerTime = 0;
    std::uint64_t lost = 0;

    /// Plays for so many frames; `sample` is 0 for silence.
    void play(std::uint64_t frames, float sample, bool isReading = true) {
        const std::vector<float> samples(block * 2, sample);
        for (std::uint64_t done = 0; done < frames; done += block) {
            const bool takes = limiter.takes(samples.data(), block, indices);
            if (takes) indices.write += block;
            if (!takes) lost += block;
            readerTime += block;
            for (; readerTime >= readSize; readerTime -= readSize) {
                if (isReading) indices.read = std::min(indices.read + readSize, indices.write);
            }
        }
    }
    std::uint64_t waiting() const { return indices.write - indices.read; }
};

TEST(FreeRunningBacklogLimiterTests, CyclesOfAnyLengthsLoseNothing) {
    for (const std::size_t block : {32UL, 441UL, 512UL, 4096UL}) {
        for (const std::uint64_t readSize : {15UL, 64UL, 480UL, 512UL, 4096UL}) {
            Meeting meeting{block, readSize};
            meeting.play(200'000, 0.5F);
            EXPECT_EQ(meeting.lost, 0U) << block << " written, " << readSize << " read at once";
        }
    }
}

TEST(FreeRunningBacklogLimiterTests, AReaderThatWasAwayFindsLittleAndTheRestIsTrimmedInSilence) {
    Meeting meeting{512, 512};
    meeting.play(20'000, 0.5F);
    meeting.play(500'000, 0.5F, false);
    EXPECT_LE(meeting.waiting(), 8U * 512) << "not the whole ring";
    meeting.play(20'000, 0.5F);
    const std::uint64_t lost = meeting.lost;
    meeting.play(20'000, 0.5F);
    EXPECT_EQ(meeting.lost, lost) << "sound is kept once the reader is back";
    meeting.play(20'000, 0.0F);
    EXPECT_LE(meeting.waiting(), 3U * 512);
}

TEST(FreeRunningBacklogLimiterTests, ARingThatNobodyHasReadTakesAll) {
    Meeting meeting{512, 512};
    meeting.play(100'000, 0.5F, false);
    EXPECT_EQ(meeting.lost, 0U);
    // A reader that connects jumps to "now"; that is no read.
    meeting.indices.read = meeting.indices.write;
    meeting.play(100'000, 0.5F);
    meeting.play(100'000, 0.5F, false);
    EXPECT_LE(meeting.waiting(), 8U * 512);
}

} // namespace
