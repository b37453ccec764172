#include "driver/BacklogLimiter.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using halvo::driver::BacklogLimiter;

constexpr std::size_t kBlock = 64;

/// Plays a script of cycles, a letter each: `S` sound or `.` silence, and a reader that reads one
/// block in each, unless the letter below is `-`. `x` marks the blocks that were not taken.
std::string taken(const std::string& blocks, const std::string& reader, BacklogLimiter::Turn turn) {
    const std::vector<float> sound(kBlock * 2, 0.5F);
    const std::vector<float> silence(kBlock * 2, 0.0F);
    BacklogLimiter pace;
    BacklogLimiter::Indices indices;
    std::string result;
    const auto read = [&](std::size_t cycle) {
        if (reader[cycle] == '-') return;
        indices.read = std::min(indices.read + kBlock, indices.write);
    };
    for (std::size_t cycle = 0; cycle < blocks.size(); ++cycle) {
        if (turn == BacklogLimiter::Turn::anyTime) read(cycle);
        const auto& block = blocks[cycle] == 'S' ? sound : silence;
        const bool takes = pace.takes(block.data(), kBlock, indices, turn);
        if (takes) indices.write += kBlock;
        result += takes ? blocks[cycle] : 'x';
        if (turn == BacklogLimiter::Turn::afterWriter) read(cycle);
    }
    return result;
}

TEST(ReaderPaceTests, WhatTheRingTakes) {
    using enum BacklogLimiter::Turn;
    struct Case {
        const char* name;
        BacklogLimiter::Turn turn;
        const char* blocks;
        const char* reader;
        const char* taken;
    };
    const Case cases[] = {
        {"a reader that keeps up", afterWriter, "SS..SS", "rrrrrr", "SS..SS"},
        {"one late cycle, mended in the next silence", afterWriter, "SSSS..S", "rr-rrrr",
         "SSSSx.S"},
        {"away: no more than two blocks wait", afterWriter, "SSSSSSSS..S", "rr----rrrrr",
         "SSSSxxxSx.S"},
        {"without turns one block has to wait", anyTime, "SS..SS..S", "rrrrrrrrr", "SS..SS..S"},
        {"without turns, two late cycles", anyTime, "SSSSSS..S", "rrr--rrrr", "SSSSxS..S"},
        {"nobody has ever read", afterWriter, "SS..SS", "------", "SS..SS"},
    };
    for (const auto& [name, turn, blocks, reader, expected] : cases)
        EXPECT_EQ(taken(blocks, reader, turn), expected) << name;
}

TEST(ReaderPaceTests, AReadIndexBeyondTheWrittenIsNothingWaiting) {
    const std::vector<float> silence(kBlock * 2, 0.0F);
    BacklogLimiter pace;
    for (const std::uint64_t read : {~std::uint64_t{0}, std::uint64_t{5000}}) {
        EXPECT_TRUE(
            pace.takes(silence.data(), kBlock, {1000, read}, BacklogLimiter::Turn::afterWriter));
    }
}

} // namespace
