#include "platform/VirtualOutput.h"
#include "unit/app/AppDelegateFixture.h"

#include <cmath>
#include <thread>

namespace halvo {

using namespace std::string_literals;
using StartAndQuit = AppDelegateTest;

TEST_F(StartAndQuit, TheDebugLogTellsTheOrderOfAFreshStart) {
    launchWithDriver();
    const std::string expected = "Halvo: Launch start\n"
                                 "Halvo: Devices: [\"Speakers [acc.a]\", \"Headphones [acc.b]\", "
                                 "\"Halvo Virtual Output [HalvoVirtualOutput_UID]\"]\n"
                                 "Halvo: Default: acc.a\n"
                                 "Halvo: Will output to real device: acc.a\n"
                                 "Halvo: originalOutputUID: acc.a\n"
                                 "Halvo: Starting engine, outputting to: acc.a\n"
                                 "Halvo: Engine started, ringBuffer connected: true\n"
                                 "Halvo: Launch done\n";
    EXPECT_EQ(debugLog(), expected);
    for (const auto& line : fake.systemLog.lines)
        EXPECT_EQ(line.find("Halvo: Halvo:"), std::string::npos);
    EXPECT_EQ(output(), (std::vector<std::string>{
                            "Halvo: Saved real device volume 1.0, set to max",
                            "Halvo: Switched default + system output to Halvo Virtual Output"}));
    EXPECT_EQ(defaultUID(), kVirtualDeviceUID);
    EXPECT_EQ(fake.audioHardware.systemOutput(), virtualDevice);
}

TEST_F(StartAndQuit, ADevicesNameCannotBreakTheLogsLine) {
    fake.audioHardware.device(a).name = R"(The "Best" \ One)";
    fake.audioHardware.device(b).name = "a\nHalvo: \r\tb\x1B[2J\x7F\0é"s;
    fake.audioHardware.add("acc\n.c", "");
    launch();
    EXPECT_TRUE(debugLog().contains(R"(Devices: ["The \"Best\" \\ One [acc.a]", )"
                                    R"("a\nHalvo: \r\tb\u{1B}[2J\u{7F}\0é [acc.b]", " [acc\n.c]"])"
                                    "\nHalvo: Default: "))
        << debugLog();
}

TEST_F(StartAndQuit, WithoutAnyDeviceTheInterfaceStillHasItsPreset) {
    fake.audioHardware.remove(a);
    fake.audioHardware.remove(b);
    launch();
    EXPECT_NE(debugLog().find("Devices: []\n"), std::string::npos);
    EXPECT_NE(debugLog().find("originalOutputUID: nil\n"), std::string::npos);
    EXPECT_NE(debugLog().find("No suitable hardware output device found\n"), std::string::npos);
    EXPECT_EQ(delegate->presetManager().activePresetID.get(),
              delegate->presetManager().presets.get().front().id);
}

TEST_F(StartAndQuit, WithoutADriverItSaysSoAndStaysUp) {
    launch();
    EXPECT_EQ(output(),
              (std::vector<std::string>{"Halvo: Saved real device volume 1.0, set to max",
                                        "Halvo: Could not connect to driver shared memory",
                                        "Halvo: Can't find virtual device for volume monitoring"}));
    EXPECT_NE(debugLog().find("ringBuffer connected: false\n"), std::string::npos);
}

TEST_F(StartAndQuit, ARefusedDriverEndsTheProgramAfterTheSequence) {
    fake.driverInstallation.installed.reset();
    launch();
    EXPECT_EQ(fake.application.terminations, 1);
    EXPECT_EQ(fake.alert.shown.at(0).buttons.back(), "Quit");
    EXPECT_TRUE(fake.driverInstallation.calls.empty());
    EXPECT_NE(debugLog().find("Halvo: Driver installation failed or cancelled, quitting\n"),
              std::string::npos);
    EXPECT_TRUE(debugLog().ends_with("Halvo: Launch done\n"));
    delegate->applicationWillTerminate();
    EXPECT_EQ(defaultUID(), "acc.a");
}

TEST_F(StartAndQuit, TheDriverIsStartedOnceItIsInPlace) {
    using Calls = std::vector<std::string>;
    launch();
    EXPECT_EQ(fake.driverInstallation.calls, Calls{"ensure running"});
    fake.driverInstallation.calls.clear();
    fake.driverInstallation.installed.reset();
    fake.alert.answers = {0};
    launch();
    EXPECT_EQ(fake.driverInstallation.calls,
              (Calls{"copy /bundled.driver", "take up", "pause 2000", "ensure running"}));
    EXPECT_EQ(fake.application.terminations, 0);
}

TEST_F(StartAndQuit, NowPlayingStartsBeforeTheDriverIsLookedFor) {
    struct Row {
        const char* name;
        bool hasHelper;
        std::vector<std::string> log; ///< between the launch and the device list
    };
    const Row rows[] = {{"helper",
                         true,
                         {"Halvo: Found helper in app bundle root: /bundle",
                          "Halvo: MediaRemote helper process started (PID: 4711)"}},
                        {"no helper",
                         false,
                         {"Halvo: Helper files not found in bundle",
                          "Halvo: MediaRemote helper not found, using AppleScript fallback"}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        fake.mediaHelper.folder = "/bundle";
        fake.fileSystem.files = {{"/bundle/run.pl", ""}};
        if (row.hasHelper) fake.fileSystem.files["/bundle/media_helper.dylib"] = "";
        fake.systemLog.lines.clear();
        launch();
        const auto& lines = fake.systemLog.lines;
        const auto start = std::ranges::find(lines, "Halvo: Launch start");
        EXPECT_EQ(std::ranges::search(lines, row.log).begin(), start + 1);
        EXPECT_FALSE(debugLog().contains("elper")) << "for the system log alone";
        fake.log.clear();
        fake.scriptRunner.sources.clear();
        delegate->applicationWillTerminate();
        settle();
        fake.backgroundQueue.flush();
        EXPECT_EQ(std::ranges::count(fake.log.calls(), "terminate helper"), row.hasHelper ? 1 : 0);
        EXPECT_EQ(fake.scriptRunner.sources.size(), row.hasHelper ? 0U : 2U) << "the first alone";
    }
}

TEST_F(StartAndQuit, AChosenGenreReachesTheEngine) {
    fake.userDefaults.setBool("autoGenreEnabled", true);
    launchWithDriver();
    delegate->nowPlayingMonitor().currentTrack.set(NowPlayingTrack{"T", "Yes", {}, {}, {}});
    settle();
    fake.httpSession.answer(
        HTTPResponse{200, R"({"toptags":{"tag":[{"name":"rock","count":99}]}})"});
    EXPECT_EQ(delegate->audioEngine().currentPreset()->name, "Rock");
}

TEST_F(StartAndQuit, QuitGivesBackInOrderAfterTheListenersAreSilent) {
    fake.audioHardware.changeVolume(a, 0.4F);
    launchWithDriver();
    fake.log.clear();
    delegate->applicationWillTerminate();
    EXPECT_EQ(fake.log.calls(),
              (std::vector<std::string>{"silenceListeners", "setVolume acc.a 0 0.4",
                                        "setVolume acc.a 1 0.4", "setVolume acc.a 2 0.4",
                                        "setDefaultOutput acc.a", "setDefaultSystemOutput acc.a",
                                        "unit stop", "unit dispose"}));
    EXPECT_FALSE(hasAnyKey());
    settle();
    EXPECT_EQ(defaultUID(), "acc.a") << "nothing takes the default again";
    EXPECT_FALSE(hasAnyKey());
}

TEST_F(StartAndQuit, DirtySessions) {
    struct Row {
        const char* name;
        std::optional<std::string> uid;
        std::optional<float> volume;
        std::optional<float> expectedVolume; ///< of acc.b after the repair; absent = untouched
        const char* expectedLog;
    };
    const Row rows[] = {
        {"whole", "acc.b", 0.125F, 0.125F,
         "Halvo: Dirty session detected — restoring acc.b to volume 0.125\n"},
        {"full volume", "acc.b", 1.0F, 1.0F,
         "Halvo: Dirty session detected — restoring acc.b to volume 1.0\n"},
        {"no volume", "acc.b", std::nullopt, 0.0F,
         "Halvo: Dirty session detected — restoring acc.b to volume 0.0\n"},
        {"device gone", "acc.gone", 0.5F, std::nullopt,
         "Halvo: Dirty session detected — restoring acc.gone to volume 0.5\n"},
        {"no device", std::nullopt, 0.5F, std::nullopt, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        fake.fileSystem.files.clear();
        fake.userDefaults.values.clear();
        fake.audioHardware.changeDefault(a);
        for (auto& element : fake.audioHardware.device(b).volumes)
            element = 0.9F;
        saveDirty(row.uid, row.volume);
        fake.log.clear();
        launch(); // without driver: the repair stays visible
        EXPECT_TRUE(debugLog().starts_with(std::string("Halvo: Launch start\n") + row.expectedLog));
        const bool repaired = row.expectedVolume.has_value();
        EXPECT_EQ(std::ranges::count(fake.log.calls(), "setDefaultOutput acc.b"), repaired ? 1 : 0);
        if (repaired) {
            // The repaired device is the default by now, so it is the one that is taken over.
            EXPECT_EQ(delegate->originalOutputUID(), "acc.b");
            EXPECT_EQ(delegate->originalRealVolume(), row.expectedVolume);
        } else {
            EXPECT_EQ(volume(b), 0.9F);
        }
    }
}

TEST_F(StartAndQuit, ADirtyFlagWithoutADeviceKeepsItsKeys) {
    plugDriver();
    fake.audioHardware.remove(a);
    fake.audioHardware.remove(b);
    saveDirty(std::nullopt, 0.5F);
    launch();
    EXPECT_TRUE(fake.userDefaults.boolForKey(SavedSession::kSavedDirtyFlag));
    EXPECT_EQ(fake.userDefaults.floatForKey(SavedSession::kSavedRealVolume), 0.5F);
}

TEST_F(StartAndQuit, CrashedWithTheVirtualDeviceAsDefaultTheSavedDeviceIsTakenOver) {
    plugDriver();
    saveDirty("acc.b", 0.3F);
    fake.audioHardware.changeDefault(virtualDevice);
    launch();
    EXPECT_NE(debugLog().find("Will output to real device: acc.b\n"), std::string::npos);
    EXPECT_EQ(fake.userDefaults.floatForKey(SavedSession::kSavedRealVolume), 0.3F);
}

TEST_F(StartAndQuit, TerminationUsesTheSavedRecordAloneAndKeepsIt) {
    fake.audioHardware.changeVolume(a, 0.4F);
    launchWithDriver();
    fake.log.clear();
    fake.terminationSignal.handler(fake.audioHardware, fake.userDefaults);
    EXPECT_EQ(fake.log.calls(),
              (std::vector<std::string>{"setVolume acc.a 0 0.4", "setVolume acc.a 1 0.4",
                                        "setVolume acc.a 2 0.4", "setDefaultOutput acc.a",
                                        "setDefaultSystemOutput acc.a"}));
    EXPECT_TRUE(hasAnyKey());
    fake.log.clear();
    fake.userDefaults.setBool(SavedSession::kSavedDirtyFlag, false);
    fake.terminationSignal.handler(fake.audioHardware, fake.userDefaults);
    EXPECT_TRUE(fake.log.calls().empty()) << "a clean session is left alone";
}

TEST_F(StartAndQuit, PresetsReachTheEngineInTheSameEdit) {
    launchWithDriver();
    auto& presets = delegate->presetManager();
    auto& engine = delegate->audioEngine();
    EXPECT_EQ(engine.currentPreset()->name, "R&B");
    presets.setBandGain(5, 12.0F);
    EXPECT_EQ(engine.eq().coefficients()[5], BiquadCoefficients::peaking(12, 1000, 48000));
    EXPECT_EQ(engine.currentPreset()->bands[5], 12.0F);
    presets.preamp.set(-6);
    EXPECT_EQ(presets.presets.get()[0].preamp, -6);
    EXPECT_EQ(engine.currentPreset()->preamp, -6);
    presets.eqEnabled.set(false);
    EXPECT_FALSE(engine.eqEnabled());
}

TEST_F(StartAndQuit, AnAbsurdPresetLeavesNothingBehind) {
    launchWithDriver();
    auto& presets = delegate->presetManager();
    std::vector<float> tone(2048 * 2);
    for (std::size_t n = 0; n < tone.size(); ++n)
        tone[n] = 0.01F * std::sin(static_cast<float>(n / 2) * 0.1309F); // 1000 Hz
    const auto levelsAfter = [&](int blocks) {
        for (int block = 0; block < blocks; ++block)
            (void)play(tone);
        fake.mainQueue.advance(100ms);
        return fake.statusPublisher.bandLevels;
    };
    struct Row {
        float preamp;
        float gain;
    };
    for (const auto& [preamp, gain] : {Row{0, 1400}, Row{0, -1400}, Row{1e30F, 0}, Row{770, 300}}) {
        const auto absurd = presets.createCustomPreset("Absurd");
        presets.activate(absurd);
        presets.preamp.set(preamp);
        for (std::size_t band = 0; band < kBandCount; ++band)
            presets.setBandGain(band, gain);
        for (const float level : levelsAfter(4))
            EXPECT_TRUE(level >= 0 && level <= 1) << level << " at " << gain << " dB";
        presets.activate(*presets.presetNamed("Flat"));
        (void)play(tone); // what the filters still hold
        EXPECT_EQ(play(tone), tone) << gain << " dB";
        EXPECT_NEAR(levelsAfter(60)[5], 0.652, 0.001) << gain << " dB";
        const auto& samples = delegate->statusView().waveformSamples;
        EXPECT_TRUE(std::ranges::all_of(samples, [](float s) { return std::isfinite(s); }));
    }
}

TEST_F(StartAndQuit, ActivationDoesNotOverwriteTheOldPresetsPreamp) {
    launchWithDriver();
    auto& presets = delegate->presetManager();
    presets.preamp.set(-6);
    presets.activate(presets.presets.get()[5]);
    EXPECT_EQ(presets.presets.get()[0].preamp, -6);
    EXPECT_EQ(presets.preamp.get(), 0);
    EXPECT_EQ(delegate->audioEngine().currentPreset()->name, "Flat");
}

TEST_F(StartAndQuit, WithAnEmptyListTheEngineKeepsWhatItHad) {
    launchWithDriver();
    auto& presets = delegate->presetManager();
    const auto before = delegate->audioEngine().eq().coefficients();
    presets.presets.set({});
    presets.activePresetID.set(std::nullopt);
    presets.activePresetID.set(UUID::random());
    presets.preamp.set(-3);
    EXPECT_EQ(delegate->audioEngine().currentPreset()->name, "R&B");
    EXPECT_EQ(delegate->audioEngine().eq().coefficients(), before);
}

TEST_F(StartAndQuit, TheFirstPresetsPreampSurvivesTheStart) {
    auto first = std::string(R"([{"id":"6F9619FF-8B86-D011-B42D-00C04FC964FF","name":"Mine",)") +
                 R"("preamp":-6,"bands":[0,0,0,0,0,0,0,0,0,0],"isFactory":false}])";
    fake.fileSystem.files["/support/Halvo/presets.json"] = first;
    launchWithDriver();
    EXPECT_EQ(delegate->presetManager().preamp.get(), -6);
    EXPECT_EQ(delegate->presetManager().presets.get()[0].preamp, -6);
    EXPECT_EQ(delegate->audioEngine().currentPreset()->preamp, -6);
}

TEST_F(StartAndQuit, EveryEndLeavesARealDeviceAsTheDefault) {
    const auto end = [this](bool isQuit) {
        if (isQuit) {
            delegate->applicationWillTerminate();
        } else {
            fake.terminationSignal.handler(fake.audioHardware, fake.userDefaults);
        }
    };
    for (const bool isQuit : {true, false}) {
        SCOPED_TRACE(isQuit ? "quit" : "SIGTERM");
        fake.audioHardware.changeDefault(a);
        launchWithDriver();
        delegate->deviceManager().selectedDeviceID.set("acc.b"); // the engine plays there
        fake.audioHardware.remove(a);
        settle();
        ASSERT_EQ(defaultUID(), "HalvoVirtualOutput_UID");
        end(isQuit);
        EXPECT_EQ(defaultUID(), "acc.b") << "the device in use";
        delegate.reset();
        fake.audioHardware.remove(virtualDevice);
        a = fake.audioHardware.add("acc.a", "Speakers");
    }
    // Started without any output; one that came later has gone again, and a third is there.
    for (const bool isQuit : {true, false}) {
        SCOPED_TRACE(isQuit ? "quit" : "SIGTERM");
        fake.audioHardware.remove(a);
        fake.audioHardware.remove(b);
        launchWithDriver();
        const auto usb = fake.audioHardware.add("acc.usb", "USB");
        settle();
        fake.audioHardware.remove(usb);
        a = fake.audioHardware.add("acc.a", "Speakers");
        b = fake.audioHardware.add("acc.b", "Headphones");
        fake.audioHardware.changeDefault(virtualDevice);
        end(isQuit);
        EXPECT_NE(defaultUID(), "HalvoVirtualOutput_UID");
        EXPECT_NE(defaultUID(), "none");
        delegate.reset();
        fake.audioHardware.remove(virtualDevice);
    }
}

} // namespace halvo
