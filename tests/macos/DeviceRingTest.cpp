#include "driver/macos/VirtualDevice.h"

#include "audio/SharedRingBufferReader.h"
#include "platform/SharedMemory.h"
#include "unit/posix/SharedObject.h"

#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace {

using halvo::SharedRingBufferReader;
using halvo::driver::RingAccess;
using halvo::driver::Timebase;
using halvo::driver::VirtualDevice;
using halvo::test::SharedObject;

/// The reader's memory: one real object, whatever name is asked for.
class OneObject final : public halvo::SharedMemory {
  public:
    explicit OneObject(std::string name) : name_(std::move(name)) {}

    std::int32_t open(const char*) override { return ::shm_open(name_.c_str(), O_RDWR, 0); }
    std::int64_t size(std::int32_t descriptor) override {
        struct stat status{};
        return ::fstat(descriptor, &status) == 0 ? status.st_size : -1;
    }
    void* map(std::int32_t descriptor, std::int64_t size) override {
        void* memory = ::mmap(nullptr, static_cast<std::size_t>(size), PROT_READ | PROT_WRITE,
                              MAP_SHARED, descriptor, 0);
        return memory == MAP_FAILED ? nullptr : memory;
    }
    void unmap(void* memory, std::int64_t size) override {
        ::munmap(memory, static_cast<std::size_t>(size));
    }
    void close(std::int32_t descriptor) override { ::close(descriptor); }
    bool isCurrent(const char*, std::int32_t, const void*, std::int64_t) override { return true; }
    halvo::Subscription watch(const char*, std::function<void()>) override { return {}; }

  private:
    std::string name_;
};

/// Sound with a prime period, so that no ring length is a multiple of it.
class Sound {
  public:
    static constexpr std::uint64_t kLength = 40009;
    static constexpr std::uint64_t kLongestPiece = 4096;

    Sound() {
        for (std::uint64_t frame = 0; frame < kLength + kLongestPiece; ++frame) {
            samples_.push_back(static_cast<float>(frame % kLength) + 0.25F);
            samples_.push_back(-static_cast<float>(frame % kLength));
        }
    }
    const float* from(std::uint64_t frame) const { return samples_.data() + frame % kLength * 2; }

  private:
    std::vector<float> samples_;
};

struct Hour {
    std::uint32_t rate;
    std::uint64_t cycle;  ///< frames that the host mixes at once
    std::uint64_t stride; ///< frames that the reader takes at once
};

void playAnHour(const Hour& hour, const Sound& sound) {
    const SharedObject object;
    VirtualDevice device(object.name(), RingAccess::owner, Timebase{125, 3});
    ASSERT_TRUE(device.setRate(hour.rate, 0));
    OneObject memory(object.name());
    SharedRingBufferReader reader(memory);
    ASSERT_TRUE(reader.connect());
    ASSERT_TRUE(reader.format());
    EXPECT_EQ(reader.format()->sampleRate, hour.rate);
    ASSERT_TRUE(device.startIO(0));

    std::vector<float> heard(hour.stride * 2);
    std::uint64_t read = 0;
    for (std::uint64_t written = 0; written < std::uint64_t{hour.rate} * 3600;) {
        device.write(sound.from(written), hour.cycle);
        written += hour.cycle;
        for (; read + hour.stride <= written; read += hour.stride) {
            const auto count = static_cast<std::int64_t>(hour.stride);
            ASSERT_EQ(reader.readFrames(heard.data(), count, 2), count) << "frame " << read;
            ASSERT_EQ(std::memcmp(heard.data(), sound.from(read), heard.size() * sizeof(float)), 0)
                << "frame " << read;
        }
    }
}

TEST(DeviceRingTests, AnHourAtEachRateIsReadWithoutLoss) {
    const Sound sound;
    const Hour hours[] = {
        {44100, 512, 4096}, {48000, 512, 512}, {88200, 441, 1024}, {96000, 1024, 96}};
    for (const Hour& hour : hours) {
        SCOPED_TRACE(hour.rate);
        playAnHour(hour, sound);
    }
}

TEST(DeviceRingTests, TheHeaderFollowsTheRateAndTheSoundGoesOn) {
    const Sound sound;
    const SharedObject object;
    VirtualDevice device(object.name(), RingAccess::owner, {});
    OneObject memory(object.name());
    SharedRingBufferReader reader(memory);
    ASSERT_TRUE(reader.connect()) << "the ring exists before anything plays";
    std::vector<float> heard(64);
    for (const std::uint32_t rate : {96000U, 44100U}) {
        ASSERT_TRUE(device.setRate(rate, 0));
        EXPECT_EQ(reader.format()->sampleRate, rate);
        device.write(sound.from(rate), 32);
        EXPECT_EQ(reader.readFrames(heard.data(), 32, 2), 32);
        EXPECT_EQ(heard.front(), *sound.from(rate));
    }
    EXPECT_FALSE(device.setRate(50000, 0));
    EXPECT_EQ(device.rate(), 44100U);
}

TEST(DeviceRingTests, LevelAndMuteLeaveTheSamplesAlone) {
    const Sound sound;
    const SharedObject object;
    VirtualDevice device(object.name(), RingAccess::owner, {});
    OneObject memory(object.name());
    SharedRingBufferReader reader(memory);
    ASSERT_TRUE(reader.connect());
    std::vector<float> heard(64);
    device.setVolume(0.1F);
    device.setMuted(true);
    device.write(sound.from(7), 32);
    EXPECT_EQ(reader.readFrames(heard.data(), 32, 2), 32);
    EXPECT_EQ(std::memcmp(heard.data(), sound.from(7), heard.size() * sizeof(float)), 0);
    device.setStreamActive(false);
    device.write(sound.from(7), 32);
    EXPECT_EQ(reader.readFrames(heard.data(), 32, 2), 0) << "a stream that takes no part";
}

TEST(DeviceRingTests, AnotherUserMayOpenItWhateverTheMask) {
    const SharedObject object;
    const mode_t before = ::umask(077);
    const VirtualDevice device(object.name(), RingAccess::everybody, {});
    EXPECT_EQ(::umask(before), 077U) << "the host's own mask is as it was";
    OneObject memory(object.name());
    const auto descriptor = memory.open("");
    struct stat status{};
    ASSERT_EQ(::fstat(descriptor, &status), 0);
    memory.close(descriptor);
    EXPECT_EQ(status.st_mode & 0777U, 0666U);
}

TEST(DeviceRingTests, ARingThatWentIsMadeAgainAtTheNextFirstStart) {
    const SharedObject object;
    VirtualDevice device(object.name(), RingAccess::owner, {});
    EXPECT_EQ(device.ringProblem(), "");
    object.unlink();
    OneObject memory(object.name());
    ASSERT_TRUE(device.startIO(0));
    EXPECT_GE(memory.open(""), 0);
    object.unlink();
    ASSERT_TRUE(device.startIO(0));
    EXPECT_LT(memory.open(""), 0) << "not under a cycle that runs";
    EXPECT_TRUE(device.stopIO());
    EXPECT_TRUE(device.isRunning());
    EXPECT_TRUE(device.stopIO());
    EXPECT_FALSE(device.stopIO()) << "no more stops than starts";
}

TEST(DeviceRingTests, WithoutARingThereIsADeviceAndAReason) {
    VirtualDevice device("/no/such/place", RingAccess::everybody, {});
    EXPECT_NE(device.ringProblem(), "");
    EXPECT_TRUE(device.startIO(0));
    const float frame[2] = {1.0F, 1.0F};
    device.write(frame, 1);
}

} // namespace
