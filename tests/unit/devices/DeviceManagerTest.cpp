#include "devices/DeviceManager.h"
#include "fake/FakePlatform.h"
#include "platform/VirtualOutput.h"

#include <gtest/gtest.h>

#include <memory>

using namespace halvo;

namespace {

class Devices : public testing::Test {
  protected:
    FakePlatform fake;
    std::unique_ptr<DeviceManager> manager =
        std::make_unique<DeviceManager>(fake.audioHardware, fake.mainQueue);

    void install() {
        manager->refreshDevices();
        manager->installDefaultDeviceListener();
        manager->installDeviceListListener();
        fake.mainQueue.flush();
    }
    std::vector<std::string> uids() {
        std::vector<std::string> result;
        for (const auto& device : manager->outputDevices.get())
            result.push_back(device.uid);
        return result;
    }
};

} // namespace

TEST_F(Devices, ListsOutputsInTheServersOrderWithFallbacks) {
    fake.audioHardware.add("z", "Zeta");
    fake.audioHardware.add({.uid = "mic", .name = "Microphone", .hasOutputStreams = false});
    const auto nameless = fake.audioHardware.add({.uid = std::nullopt, .name = std::nullopt});
    fake.audioHardware.add(kVirtualDeviceUID, "Halvo Virtual Output");
    manager->refreshDevices();
    EXPECT_EQ(manager->outputDevices.get(),
              (std::vector<AudioOutputDevice>{{"z", "Zeta"},
                                              {std::to_string(nameless), "Unknown"},
                                              {kVirtualDeviceUID, "Halvo Virtual Output"}}));
}

TEST_F(Devices, AFailedReadPublishesNothingAndLeavesTheDefault) {
    const auto a = fake.audioHardware.add("a", "A");
    install();
    fake.audioHardware.deviceListFails = true;
    fake.audioHardware.changeDefault(a);
    int published = 0;
    const auto subscription = manager->outputDevices.subscribe([&](const auto&) { ++published; });
    manager->refreshDevices();
    EXPECT_EQ(published, 1) << "only the replay";
    EXPECT_EQ(manager->defaultDeviceUID.get(), "");
}

TEST_F(Devices, TheDefaultBecomesTheSelectionOnlyWhileThereIsNone) {
    const auto a = fake.audioHardware.add("a", "A");
    const auto b = fake.audioHardware.add("b", "B");
    fake.audioHardware.changeDefault(a);
    install();
    EXPECT_EQ(manager->selectedDeviceID.get(), "a");
    fake.audioHardware.changeDefault(b);
    fake.mainQueue.flush();
    EXPECT_EQ(manager->defaultDeviceUID.get(), "b");
    EXPECT_EQ(manager->selectedDeviceID.get(), "a");
    const auto nameless = fake.audioHardware.add({.uid = std::nullopt, .name = "No UID"});
    fake.audioHardware.changeDefault(nameless);
    fake.mainQueue.flush();
    EXPECT_EQ(manager->defaultDeviceUID.get(), "b") << "a default without UID changes nothing";
}

TEST_F(Devices, HandlersOfTheDefaultRunBeforeTheSelectionIsLookedAt) {
    const auto a = fake.audioHardware.add("a", "A");
    fake.audioHardware.changeDefault(a);
    const auto subscription = manager->defaultDeviceUID.subscribe([&](const std::string& uid) {
        if (!uid.empty()) manager->selectedDeviceID.set("chosen by a handler");
    });
    manager->updateDefaultDevice();
    EXPECT_EQ(manager->selectedDeviceID.get(), "chosen by a handler");
}

TEST_F(Devices, AnnouncesNewDevicesTwoTurnsLater) {
    fake.audioHardware.add("a", "A");
    install();
    fake.audioHardware.add("b", "Headphones");
    fake.mainQueue.runTurn();
    EXPECT_EQ(uids(), std::vector<std::string>{"a"}) << "delivered, not yet handled";
    fake.mainQueue.runTurn();
    EXPECT_EQ(uids(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(manager->newlyConnectedDeviceUID.get(), "b");
    EXPECT_EQ(manager->selectedDeviceID.get(), "b");
}

TEST_F(Devices, VirtualDevicesAreListedButNotAnnounced) {
    install();
    struct Row {
        const char* uid;
        const char* name;
        bool announced;
    };
    for (const auto& [uid, name, announced] :
         {Row{kVirtualDeviceUID, "Plain", false}, Row{"1", "Halvo Other", false},
          Row{"2", "Microsoft Teams Audio", false}, Row{"3", "ZoomAudioDevice", false},
          Row{"4", "Immersed", false}, Row{"5", "eqMac", false}, Row{"ZRM.x", "Any", true},
          Row{"7", "halvo in lower case", true}}) {
        manager->newlyConnectedDeviceUID.set(std::nullopt);
        fake.audioHardware.add(uid, name);
        fake.mainQueue.flush();
        EXPECT_EQ(manager->newlyConnectedDeviceUID.get().has_value(), announced) << name;
        EXPECT_EQ(uids().back(), uid);
    }
}

TEST_F(Devices, ReplugAnnouncesAgainAndUnplugChangesTheListOnly) {
    install();
    std::vector<std::string> announced;
    const auto subscription = manager->newlyConnectedDeviceUID.pipe().dropAbsent().subscribe(
        [&](const std::string& uid) { announced.push_back(uid); });
    const auto first = fake.audioHardware.add("x", "X");
    fake.mainQueue.flush();
    fake.audioHardware.remove(first);
    fake.mainQueue.flush();
    EXPECT_TRUE(uids().empty());
    EXPECT_EQ(manager->selectedDeviceID.get(), "x") << "the selection stays, though stale";
    fake.audioHardware.add("x", "X");
    fake.mainQueue.flush();
    EXPECT_EQ(announced, (std::vector<std::string>{"x", "x"}));
}

TEST_F(Devices, ListenersSurviveTheManager) {
    install();
    manager.reset();
    fake.audioHardware.add("b", "B");
    fake.audioHardware.changeDefault(*fake.audioHardware.deviceForUID("b"));
    fake.mainQueue.flush();
}
