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
std::string taken(const std::string& blocks, const std::string& reader,
                  BacklogLimiter::ReadOrder order) {
    const std::vector<float> sound(kBlock * 2, 0.5F);
    const std::vector<float> silence(kBlock * 2, 0.0F);
    BacklogLimiter limiter;
    BacklogLimiter::Indices indices;
    std::string result;
    const auto read = [&](std::size_t cycle) {
        if (reader[cycle] == '-') return;
        indices.read = std::min(indices.read + kBlock, indices.write);
    };
    for (std::size_t cycle = 0; cycle < blocks.size(); ++cycle) {
        if (order == BacklogLimiter::ReadOrder::unknown) read(cycle);
        const auto& block = blocks[cycle] == 'S' ? sound : silence;
        const bool takes = limiter.takes(block.data(), kBlock, indices, order);
        if (takes) indices.write += kBlock;
        result += takes ? blocks[cycle] : 'x';
        if (order == BacklogLimiter::ReadOrder::afterWriter) read(cycle);
    }
    return result;
}

TEST(BacklogLimiterTests, WhatTheRingTakes) {
    using enum BacklogLimiter::ReadOrder;
    struct Case {
        const char* name;
        BacklogLimiter::ReadOrder order;
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
        {"in any order one block has to wait", unknown, "SS..SS..S", "rrrrrrrrr", "SS..SS..S"},
        {"in any order, two late cycles", unknown, "SSSSSS..S", "rrr--rrrr", "SSSSxS..S"},
        {"nobody has ever read", afterWriter, "SS..SS", "------", "SS..SS"},
    };
    for (const auto& [name, order, blocks, reader, expected] : cases)
        EXPECT_EQ(taken(blocks, reader, order), expected) << name;
}

TEST(BacklogLimiterTests, AReadIndexBeyondTheWrittenIsNothingWaiting) {
    const std::vector<float> silence(kBlock * 2, 0.0F);
    BacklogLimiter limiter;
    for (const std::uint64_t read : {~std::uint64_t{0}, std::uint64_t{5000}}) {
        EXPECT_TRUE(limiter.takes(silence.data(), kBlock, {1000, read},
                                  BacklogLimiter::ReadOrder::afterWriter));
    }
}

} // namespace
