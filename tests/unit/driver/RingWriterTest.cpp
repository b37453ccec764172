#include "driver/RingWriter.h"

#include "unit/posix/SharedObject.h"

#include <array>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

using halvo::driver::RingFailure;
using halvo::driver::RingWriter;
using halvo::test::SharedObject;

constexpr std::size_t kCapacity = RingWriter::kCapacity;
constexpr std::size_t kSize = 40 + kCapacity * 2 * 4;

/// The object's bytes as another process sees them: by offset, through a separate mapping.
class Bytes {
  public:
    explicit Bytes(const std::string& name)
        : descriptor_(::shm_open(name.c_str(), O_RDWR, 0)),
          start_(static_cast<unsigned char*>(
              ::mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor_, 0))) {}
    ~Bytes() {
        ::munmap(start_, kSize);
        ::close(descriptor_);
    }
    Bytes(const Bytes&) = delete;
    Bytes& operator=(const Bytes&) = delete;

    template <typename Value> Value at(std::size_t offset) const {
        Value value{};
        std::memcpy(&value, start_ + offset, sizeof value);
        return value;
    }
    template <typename Value> void put(std::size_t offset, Value value) {
        std::memcpy(start_ + offset, &value, sizeof value);
    }
    std::uint64_t writeIndex() const { return at<std::uint64_t>(0); }
    float sample(std::uint64_t frame, std::size_t channel) const {
        return at<float>(40 + ((frame % kCapacity) * 2 + channel) * 4);
    }
    struct stat status() const {
        struct stat result{};
        (void)::fstat(descriptor_, &result);
        return result;
    }

  private:
    int descriptor_;
    unsigned char* start_;
};

/// Frame f carries f + 0.25 on the left and −f on the right.
std::vector<float> ramp(std::uint64_t firstFrame, std::size_t frames) {
    std::vector<float> samples;
    for (std::uint64_t frame = firstFrame; frame < firstFrame + frames; ++frame) {
        samples.push_back(static_cast<float>(frame) + 0.25F);
        samples.push_back(-static_cast<float>(frame));
    }
    return samples;
}

void expectRamp(const Bytes& bytes, std::uint64_t firstFrame, std::size_t frames) {
    for (std::uint64_t frame = firstFrame; frame < firstFrame + frames; ++frame) {
        ASSERT_EQ(bytes.sample(frame, 0), static_cast<float>(frame) + 0.25F) << "frame " << frame;
        ASSERT_EQ(bytes.sample(frame, 1), -static_cast<float>(frame)) << "frame " << frame;
    }
}

std::unique_ptr<RingWriter> openOrFail(const std::string& name) {
    auto writer = RingWriter::open(name);
    if (!writer) ADD_FAILURE() << writer.error().detail;
    return writer ? std::move(*writer) : nullptr;
}

TEST(RingWriterTests, HeaderStandsAtItsOffsets) {
    const SharedObject object;
    const auto writer = openOrFail(object.name());
    const Bytes bytes(object.name());
    EXPECT_EQ(bytes.at<std::uint32_t>(28), 0U) << "not ready before the rate is known";
    writer->publish(44100);
    EXPECT_EQ(bytes.at<std::uint64_t>(0), 0U);
    EXPECT_EQ(bytes.at<std::uint64_t>(8), 0U);
    EXPECT_EQ(bytes.at<std::uint32_t>(20), 44100U);
    EXPECT_EQ(bytes.at<std::uint32_t>(24), 2U);
    EXPECT_EQ(bytes.at<std::uint32_t>(28), 16384U);
    EXPECT_EQ(bytes.status().st_size, static_cast<off_t>(kSize));
    EXPECT_EQ(bytes.status().st_mode & 0777U, 0600U);
}

TEST(RingWriterTests, FramesStandAtTheirIndexModuloCapacity) {
    struct Case {
        const char* name;
        std::vector<std::size_t> blocks;
    };
    const std::vector<Case> cases{
        {"one block", {1024}},
        {"nothing", {0}},
        {"up to the end", {16384}},
        {"across the end", {16000, 1000}},
        {"around twice with odd blocks", std::vector<std::size_t>(53, 777)},
        {"a block longer than the ring", {100, 40000, 3}},
    };
    for (const Case& scene : cases) {
        SCOPED_TRACE(scene.name);
        const SharedObject object;
        const auto writer = openOrFail(object.name());
        writer->publish(48000);
        std::uint64_t total = 0;
        for (const std::size_t frames : scene.blocks) {
            writer->write(ramp(total, frames).data(), frames);
            total += frames;
        }
        const Bytes bytes(object.name());
        EXPECT_EQ(bytes.writeIndex(), total);
        const auto kept = std::min<std::uint64_t>(total, kCapacity);
        expectRamp(bytes, total - kept, static_cast<std::size_t>(kept));
    }
}

TEST(RingWriterTests, SamplesThatAreNotFiniteBecomeZero) {
    using Limits = std::numeric_limits<float>;
    struct Case {
        float given;
        float kept;
    };
    const std::array<Case, 8> cases{{{Limits::quiet_NaN(), 0.0F},
                                     {-Limits::quiet_NaN(), 0.0F},
                                     {Limits::signaling_NaN(), 0.0F},
                                     {Limits::infinity(), 0.0F},
                                     {-Limits::infinity(), 0.0F},
                                     {Limits::max(), Limits::max()},
                                     {-Limits::denorm_min(), -Limits::denorm_min()},
                                     {-1.5F, -1.5F}}};
    const SharedObject object;
    const auto writer = openOrFail(object.name());
    // Each at both ends of the ring, so that both halves of a wrapped block are seen.
    writer->write(ramp(0, kCapacity - 4).data(), kCapacity - 4);
    std::vector<float> samples;
    for (const Case& scene : cases)
        samples.insert(samples.end(), {scene.given, 0.5F});
    writer->write(samples.data(), cases.size());
    const Bytes bytes(object.name());
    for (std::size_t index = 0; index < cases.size(); ++index) {
        EXPECT_EQ(bytes.sample(kCapacity - 4 + index, 0), cases[index].kept) << "case " << index;
        EXPECT_EQ(bytes.sample(kCapacity - 4 + index, 1), 0.5F);
    }
}

TEST(RingWriterTests, AnEarlierObjectIsAdopted) {
    const SharedObject object;
    openOrFail(object.name())->publish(48000);
    Bytes bytes(object.name());
    bytes.put<std::uint64_t>(0, 5'000'000'001);
    bytes.put<std::uint64_t>(8, 5'000'000'000);
    const auto inode = bytes.status().st_ino;

    const auto writer = openOrFail(object.name());
    writer->publish(96000);
    writer->write(ramp(5'000'000'001 % kCapacity, 10).data(), 10);
    EXPECT_EQ(bytes.writeIndex(), 5'000'000'011U) << "counters go on";
    EXPECT_EQ(bytes.at<std::uint64_t>(8), 5'000'000'000U) << "the reader's own";
    EXPECT_EQ(bytes.at<std::uint32_t>(20), 96000U);
    EXPECT_EQ(bytes.status().st_ino, inode);
    EXPECT_EQ(bytes.sample(5'000'000'001, 1), -static_cast<float>(5'000'000'001 % kCapacity));
}

TEST(RingWriterTests, ASecondWriterIsRefused) {
    const SharedObject object;
    auto first = openOrFail(object.name());
    const auto second = RingWriter::open(object.name());
    ASSERT_FALSE(second);
    EXPECT_EQ(second.error().reason, RingFailure::Reason::alreadyRunning);
    first.reset();
    EXPECT_TRUE(RingWriter::open(object.name()));
}

TEST(RingWriterTests, WhatCannotBeOpenedIsSaid) {
    const auto writer = RingWriter::open("/no/such/place");
    ASSERT_FALSE(writer);
    EXPECT_EQ(writer.error().reason, RingFailure::Reason::notCreatable);
    EXPECT_FALSE(writer.error().detail.empty());

    const SharedObject foreign(kSize);
    if (::fchown(foreign.descriptor(), 65534, 65534) != 0) GTEST_SKIP() << "needs root";
    const auto refused = RingWriter::open(foreign.name());
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().reason, RingFailure::Reason::notCreatable);
}

TEST(RingWriterTests, HostileObjectsBecomeAUsableRing) {
    struct Case {
        const char* name;
        std::size_t size;
        std::uint64_t writeIndex;
        std::uint32_t capacity;
        std::uint32_t channels;
        std::uint32_t words; ///< at offsets 16 and 32
        std::uint64_t firstIndex;
    };
    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    const std::uint32_t huge = std::numeric_limits<std::uint32_t>::max();
    const std::vector<Case> cases{
        {"empty", 0, 0, 0, 0, 0, 0},
        {"half a header", 20, 77, 0, 0, 0, 77},
        {"header only", 40, 9, 16384, 2, 0, 9},
        {"one byte short", kSize - 1, 9, 16384, 2, 0, 9},
        {"larger than needed", kSize * 4, 16385, 65536, 2, 0, 16385},
        {"claims what it does not hold", 4096, 100, huge, huge, huge, 100},
        {"no channels", kSize, 100, 16384, 0, 0, 100},
        {"unknown words", kSize, 100, 16384, 2, 0xDEADBEEF, 100},
        {"a counter at its end", kSize, most, 16384, 2, 0, 0},
    };
    for (const Case& scene : cases) {
        SCOPED_TRACE(scene.name);
        const SharedObject object(kSize, 0666);
        {
            Bytes bytes(object.name());
            bytes.put(0, scene.writeIndex);
            bytes.put(28, scene.capacity);
            bytes.put(24, scene.channels);
            bytes.put(16, scene.words);
            bytes.put(32, scene.words);
        }
        ASSERT_TRUE(object.resize(scene.size));
        const auto writer = openOrFail(object.name());
        writer->publish(48000);
        const auto frames = ramp(scene.firstIndex % kCapacity, 100);
        writer->write(frames.data(), 100);

        const Bytes bytes(object.name());
        EXPECT_EQ(bytes.writeIndex(), scene.firstIndex + 100);
        EXPECT_EQ(bytes.at<std::uint32_t>(24), 2U);
        EXPECT_EQ(bytes.at<std::uint32_t>(28), 16384U);
        EXPECT_EQ(bytes.status().st_size, static_cast<off_t>(std::max(kSize, scene.size)));
        EXPECT_EQ(bytes.status().st_mode & 0777U, 0600U);
        EXPECT_EQ(bytes.sample(scene.firstIndex + 99, 1), frames.back());
    }
}

TEST(RingWriterTests, ScribblingOnTheHeaderNeverMisplacesAFrame) {
    const SharedObject object;
    const auto writer = openOrFail(object.name());
    writer->publish(48000);
    Bytes bytes(object.name());
    writer->write(ramp(0, 16000).data(), 16000);
    for (const std::size_t offset : {0U, 8U, 16U, 24U, 32U}) {
        bytes.put<std::uint64_t>(offset, std::numeric_limits<std::uint64_t>::max());
    }
    writer->write(ramp(16000, 1000).data(), 1000);
    EXPECT_EQ(bytes.writeIndex(), 17000U);
    expectRamp(bytes, 17000 - kCapacity, kCapacity);
    EXPECT_FALSE(writer->isCurrent()) << "the header no longer says what was published";
}

TEST(RingWriterTests, NoticesWhenTheObjectIsNoLongerItsOwn) {
    struct Case {
        const char* name;
        void (*spoil)(const std::string& name);
    };
    const std::vector<Case> cases{
        {"unlinked", [](const std::string& name) { ::shm_unlink(name.c_str()); }},
        {"replaced",
         [](const std::string& name) {
             ::shm_unlink(name.c_str());
             ::close(::shm_open(name.c_str(), O_RDWR | O_CREAT, 0600));
         }},
        {"shrunk",
         [](const std::string& name) {
             const int descriptor = ::shm_open(name.c_str(), O_RDWR, 0);
             EXPECT_EQ(::ftruncate(descriptor, 100), 0);
             ::close(descriptor);
         }},
    };
    for (const Case& scene : cases) {
        SCOPED_TRACE(scene.name);
        const SharedObject object;
        auto writer = openOrFail(object.name());
        writer->publish(48000);
        EXPECT_TRUE(writer->isCurrent());
        scene.spoil(object.name());
        writer->write(ramp(0, kCapacity).data(), kCapacity);
        EXPECT_FALSE(writer->isCurrent());

        writer.reset();
        writer = openOrFail(object.name());
        writer->publish(48000);
        writer->write(ramp(0, 10).data(), 10);
        EXPECT_TRUE(writer->isCurrent());
        EXPECT_EQ(Bytes(object.name()).status().st_size, static_cast<off_t>(kSize));
    }
}

TEST(RingWriterTests, PublishingMarksTheObjectAsChanged) {
    const SharedObject object;
    const auto writer = openOrFail(object.name());
    writer->publish(48000);
    const Bytes bytes(object.name());
    const std::array<timespec, 2> longAgo{{{1000, 0}, {1000, 0}}};
    const int descriptor = ::shm_open(object.name().c_str(), O_RDWR, 0);
    ASSERT_EQ(::futimens(descriptor, longAgo.data()), 0);
    ::close(descriptor);
    writer->publish(48000);
    EXPECT_GT(bytes.status().st_mtime, 1000) << "readers look again, also at an equal header";
}

} // namespace
