#include "app/RealDevices.h"
#include "platform/VirtualOutput.h"
#include "unit/app/AppDelegateFixture.h"

namespace halvo {

class Routing : public AppDelegateTest {
  protected:
    /// Lines printed since start-up began, without those about the real device's volume.
    std::vector<std::string> switchLines() {
        auto lines = output();
        std::erase_if(lines, [](const std::string& line) {
            return line.contains("Saved real") || line.contains("shared memory") ||
                   line.contains("volume monitoring");
        });
        return lines;
    }
    int timesLogged(const std::string& line) {
        int count = 0;
        const auto log = debugLog();
        for (auto at = log.find(line); at != std::string::npos; at = log.find(line, at + 1))
            ++count;
        return count;
    }
};

TEST_F(Routing, RealDevices) {
    struct Row {
        const char* uid;
        const char* name;
        bool real;
    };
    for (const auto& [uid, name, real] :
         {Row{"acc.a", "Speakers", true}, Row{kVirtualDeviceUID, "Anything", false},
          Row{"ZRMOutputCapture", "Capture", false}, Row{"ZRM.x", "Plain", false},
          Row{"x", "My ZRM", false}, Row{"x", "Microsoft Teams Audio", false},
          Row{"ZoomAudio-1", "Plain", false}, Row{"x", "zoomaudio", true},
          Row{"x", "Immersed VR", false}, Row{"eqMac-2", "Plain", false},
          Row{"x", "Halvo", false}}) {
        EXPECT_EQ(isRealDevice({uid, name}), real) << uid << " / " << name;
    }
}

TEST_F(Routing, CaptureSkipsAVirtualDefault) {
    plugDriver();
    fake.audioHardware.changeDefault(virtualDevice);
    launch();
    EXPECT_EQ(delegate->originalOutputUID(), "acc.a") << "the first real one of the list";
    EXPECT_EQ(delegate->deviceManager().selectedDeviceID.get(), "acc.a");
}

TEST_F(Routing, ARefusedDefaultIsTriedFourTimes) {
    plugDriver();
    fake.audioHardware.refusedDefaults = 3;
    launch();
    fake.mainQueue.advance(1500ms);
    EXPECT_EQ(switchLines(), (std::vector<std::string>{
                                 "Halvo: setDefaultOutputDevice failed, retrying... (3 left)",
                                 "Halvo: setDefaultOutputDevice failed, retrying... (2 left)",
                                 "Halvo: setDefaultOutputDevice failed, retrying... (1 left)"}));
    fake.mainQueue.advance(300ms);
    EXPECT_EQ(switchLines().back(),
              "Halvo: Switched default + system output to Halvo Virtual Output");
}

TEST_F(Routing, WithoutAVirtualDeviceEachLineComesAfterItsDelay) {
    launch();
    EXPECT_TRUE(switchLines().empty());
    fake.mainQueue.advance(499ms);
    EXPECT_TRUE(switchLines().empty());
    fake.mainQueue.advance(1ms);
    EXPECT_EQ(switchLines().size(), 1U);
    fake.mainQueue.advance(1s);
    EXPECT_EQ(switchLines(),
              (std::vector<std::string>{
                  "Halvo: setDefaultOutputDevice failed, retrying... (3 left)",
                  "Halvo: setDefaultOutputDevice failed, retrying... (2 left)",
                  "Halvo: setDefaultOutputDevice failed, retrying... (1 left)",
                  "Halvo: WARNING - Could not switch to Halvo Virtual Output. Is the driver "
                  "installed?"}));
}

TEST_F(Routing, ASwitchThatDoesNotStickIsRetriedAtOnce) {
    plugDriver();
    fake.audioHardware.ignoredDefaults = 100;
    launch();
    fake.mainQueue.advance(900ms);
    EXPECT_EQ(switchLines(),
              (std::vector<std::string>{"Halvo: Switch didn't stick, retrying... (3 left)",
                                        "Halvo: Switch didn't stick, retrying... (2 left)",
                                        "Halvo: Switch didn't stick, retrying... (1 left)"}));
    fake.mainQueue.advance(300ms);
    EXPECT_EQ(switchLines().back(),
              "Halvo: WARNING - Could not switch to Halvo Virtual Output after retries");
    EXPECT_EQ(fake.mainQueue.now(), 1200ms);
}

TEST_F(Routing, TheVerificationLooksForItself) {
    plugDriver();
    launch();
    fake.audioHardware.silenceListeners(); // the change was never announced
    fake.mainQueue.advance(300ms);
    EXPECT_EQ(switchLines().back(),
              "Halvo: Switched default + system output to Halvo Virtual Output");
}

TEST_F(Routing, TheRetryLineOutlivesTheDelegate) {
    launch();
    delegate.reset();
    fake.log.clear();
    fake.mainQueue.advance(5s);
    EXPECT_EQ(switchLines(), std::vector<std::string>{
                                 "Halvo: setDefaultOutputDevice failed, retrying... (3 left)"});
    EXPECT_TRUE(fake.log.calls().empty());
}

TEST_F(Routing, ARealDefaultMovesTheEngineAndIsTakenBack) {
    fake.audioHardware.changeVolume(b, 0.4F);
    launchWithDriver();
    output().clear();
    fake.log.clear();
    fake.audioHardware.changeDefault(b);
    fake.mainQueue.flush();
    auto steps = fake.log.calls();
    std::erase_if(steps, [](const auto& call) {
        return call != "setVolume acc.b 0 1.0" && !call.starts_with("unit setDevice");
    });
    // Twice by design.
    const auto device = "unit setDevice " + std::to_string(b);
    EXPECT_EQ(steps, (std::vector<std::string>{"setVolume acc.b 0 1.0", device,
                                               "setVolume acc.b 0 1.0", device}));
    EXPECT_EQ(timesLogged("Default changed to Headphones, switching engine output\n"), 1);
    EXPECT_EQ(timesLogged("Switching output to: acc.b\n"), 1);
    EXPECT_EQ(delegate->originalOutputUID(), "acc.b");
    EXPECT_EQ(fake.outputUnits.current->device, b);
    // The second read sees the raised device.
    EXPECT_EQ(output(),
              (std::vector<std::string>{"Halvo: Saved real device volume 0.4, set to max",
                                        "Halvo: Saved real device volume 1.0, set to max"}));
    EXPECT_EQ(defaultUID(), "acc.b");
    fake.mainQueue.advance(500ms);
    EXPECT_EQ(defaultUID(), kVirtualDeviceUID);
    EXPECT_TRUE(delegate->audioEngine().isRunning());
}

TEST_F(Routing, AlertsComeBackWithTheDefaultAndWithoutIt) {
    launchWithDriver();
    auto& hardware = fake.audioHardware;
    for (const bool isRefused : {false, true}) {
        SCOPED_TRACE(isRefused);
        hardware.changeDefault(b);
        (void)hardware.setDefaultSystemOutput(b);
        hardware.refusedDefaults = isRefused ? 1 : 0;
        fake.log.clear();
        fake.mainQueue.advance(500ms);
        auto switches = fake.log.calls();
        std::erase_if(switches, [](const auto& call) { return !call.starts_with("setDefault"); });
        EXPECT_EQ(switches,
                  (std::vector<std::string>{"setDefaultOutput HalvoVirtualOutput_UID",
                                            "setDefaultSystemOutput HalvoVirtualOutput_UID"}));
        EXPECT_EQ(hardware.systemOutput(), virtualDevice);
        EXPECT_EQ(defaultUID(), isRefused ? "acc.b" : kVirtualDeviceUID);
    }
}

TEST_F(Routing, ADeviceThatComesBackBetweenTheTwoStepsIsFoundAnew) {
    plugDriver();
    auto& hardware = fake.audioHardware;
    const auto replug = [&] {
        hardware.remove(virtualDevice);
        virtualDevice = hardware.add(kVirtualDeviceUID, "Halvo Virtual Output");
    };
    hardware.afterNextDefault = replug;
    launch();
    EXPECT_EQ(hardware.systemOutput(), virtualDevice) << "at the start";
    settle();
    hardware.changeDefault(b);
    fake.mainQueue.advance(499ms);
    hardware.afterNextDefault = replug;
    hardware.silenceListeners(); // or it would be taken for new
    fake.mainQueue.advance(1ms);
    EXPECT_EQ(hardware.systemOutput(), virtualDevice) << "half a second after a change";
}

TEST_F(Routing, EveryDefaultChangeHasItsOwnReassertion) {
    launchWithDriver();
    fake.audioHardware.changeDefault(b);
    fake.mainQueue.advance(300ms);
    fake.audioHardware.changeDefault(a);
    fake.log.clear();
    fake.mainQueue.advance(200ms); // of the first change
    EXPECT_EQ(std::ranges::count(fake.log.calls(), "setDefaultOutput HalvoVirtualOutput_UID"), 1);
    fake.mainQueue.advance(300ms); // of the second
    EXPECT_EQ(std::ranges::count(fake.log.calls(), "setDefaultOutput HalvoVirtualOutput_UID"), 2);
}

TEST_F(Routing, AReassertionKeepsTheDelegateAlive) {
    launchWithDriver();
    fake.audioHardware.changeDefault(b);
    fake.mainQueue.flush();
    delegate.reset();
    fake.mainQueue.advance(500ms);
    EXPECT_EQ(defaultUID(), kVirtualDeviceUID);
}

TEST_F(Routing, AnExcludedDefaultIsOnlyTakenBack) {
    launchWithDriver();
    const auto before = debugLog();
    fake.audioHardware.changeDefault(fake.audioHardware.add("zoom", "ZoomAudio X"));
    fake.mainQueue.flush();
    EXPECT_EQ(debugLog(), before);
    EXPECT_EQ(delegate->originalOutputUID(), "acc.a");
    fake.mainQueue.advance(500ms);
    EXPECT_EQ(defaultUID(), kVirtualDeviceUID);
}

TEST_F(Routing, BindingsFollowTheDefaultAndNothingElse) {
    launchWithDriver();
    auto& presets = delegate->presetManager();
    const auto bound = presets.presets.get()[3];
    presets.deviceBindings.set({{"acc.b", bound.id}});
    const auto before = presets.activePresetID.get();
    delegate->deviceManager().selectedDeviceID.set("acc.b");
    EXPECT_EQ(presets.activePresetID.get(), before) << "picking it in the panel";
    fake.audioHardware.changeDefault(b);
    fake.mainQueue.flush();
    EXPECT_EQ(presets.activePresetID.get(), bound.id);

    const auto own = presets.presets.get()[5];
    presets.deviceBindings.set({{kVirtualDeviceUID, own.id}, {"zoom", bound.id}});
    settle();
    EXPECT_EQ(presets.activePresetID.get(), own.id) << "the virtual device's";
    fake.audioHardware.changeDefault(fake.audioHardware.add("zoom", "ZoomAudio X"));
    fake.mainQueue.flush();
    EXPECT_EQ(presets.activePresetID.get(), bound.id) << "that of a device that is no real one";
}

TEST_F(Routing, TheGenreGoesBeforeBindings) {
    launchWithDriver();
    auto& presets = delegate->presetManager();
    presets.deviceBindings.set({{"acc.b", presets.presetNamed("Deep")->id}});
    presets.activate(*presets.presetNamed("Rock"));
    const auto active = [&] { return presets.activePreset()->name; };
    auto& genre = delegate->autoGenreController();
    genre.isEnabled.set(true);
    delegate->nowPlayingMonitor().currentTrack.set(NowPlayingTrack{"T", "A", {}, {}, {}});
    fake.mainQueue.advance(1s);
    ASSERT_TRUE(genre.isLookingUp.get());
    fake.audioHardware.changeDefault(b);
    fake.mainQueue.advance(1s);
    EXPECT_EQ(active(), "Rock");
    fake.httpSession.answer(
        HTTPResponse{200, R"({"toptags":{"tag":[{"name":"jazz","count":99}]}})"});
    EXPECT_EQ(active(), "Jazz") << "nobody has chosen another one";
    genre.isEnabled.set(false);
    fake.audioHardware.changeDefault(b);
    fake.mainQueue.flush();
    EXPECT_EQ(active(), "Deep");
}

TEST_F(Routing, SelectingMovesTheEngineButNotTheOriginal) {
    launchWithDriver();
    const int made = fake.outputUnits.made;
    auto& selected = delegate->deviceManager().selectedDeviceID;
    for (const auto* ignored : {"acc.a", "", kVirtualDeviceUID})
        selected.set(ignored);
    EXPECT_EQ(fake.outputUnits.made, made);
    selected.set("acc.b");
    EXPECT_EQ(fake.outputUnits.current->device, b);
    EXPECT_EQ(delegate->originalOutputUID(), "acc.a");
    delegate->applicationWillTerminate();
    EXPECT_EQ(defaultUID(), "acc.a");
}

TEST_F(Routing, AReplugSoundsAgainThoughTheSelectionDidNotChange) {
    launchWithDriver();
    auto x = fake.audioHardware.add("x", "X");
    fake.mainQueue.flush();
    fake.audioHardware.remove(x);
    fake.mainQueue.flush();
    x = fake.audioHardware.add("x", "X");
    fake.mainQueue.flush();
    EXPECT_EQ(timesLogged("New device connected: x, switching\n"), 2);
    EXPECT_EQ(timesLogged("Switching output to: x\n"), 1);
    EXPECT_EQ(fake.outputUnits.current->device, x);
}

} // namespace halvo
