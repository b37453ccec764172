#pragma once

#include "platform/VirtualOutput.h"
#include "unit/loudness/LoudnessMachine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace halvo::test {

constexpr const char* kSpeakers = "acc.speakers";
constexpr const char* kHeadphones = "acc.headphones";

/// Every channel of the program is heard at `level`, within what rounding does.
#define EXPECT_HEARD(machine, stream, level)                                                       \
    EXPECT_THAT((machine).heard(stream), testing::Each(testing::FloatNear(level, 0.001F)))

/// Two outputs, the speakers first, music playing; the application is not yet started.
class LoudnessGuardTest : public testing::Test {
  protected:
    LoudnessMachine machine;
    FakeAudioServer& server = machine.server;

    void begin(const DeviceLevel& speakers, const DeviceLevel& headphones = stereo(0.2F)) {
        server.plug(kSpeakers, "Speakers", speakers);
        server.plug(kHeadphones, "Headphones", headphones);
        machine.plugDriver();
        server.play(kMusic);
        machine.settle();
    }
    void pick(const std::string& uid) {
        machine.delegate->deviceManager().selectedDeviceID.set(uid);
        machine.settle();
    }
    /// The person moves the desktop's slider, which belongs to the virtual device.
    void turnTo(const DeviceLevel& level) {
        machine.allow(kMusic, 1);
        server.changeLevel(kVirtualDeviceUID, level);
        machine.settle();
    }
    float virtualVolume() { return machine.level(kVirtualDeviceUID).channelVolumes.front(); }
    std::vector<std::string>& log() { return machine.fake.systemLog.lines; }
};

} // namespace halvo::test
