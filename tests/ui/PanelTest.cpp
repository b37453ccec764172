#include "PanelFixture.h"

#include "nowplaying/PlayerScripts.h"

#include <chrono>

namespace halvo {

namespace {

TEST_F(PanelTest, FoldingAnnouncesTheSizeAtTheNextTurn) {
    const int folded = panel.content().fittingSize().height();
    int announced = 0;
    QObject::connect(&panel.content(), &PanelContent::sizeChanged, &panel.window(),
                     [&] { ++announced; });
    for (const char* control : {"Show EQ", "Settings"}) {
        announced = 0;
        const int before = panel.window().height();
        open(control);
        EXPECT_GT(announced, 0) << control;
        EXPECT_GT(panel.window().height(), before) << control;
        EXPECT_EQ(panel.window().height(), panel.content().fittingSize().height()) << control;
    }
    open("Hide EQ");
    open("Settings");
    EXPECT_EQ(panel.window().height(), folded);
    settings().setShowNowPlaying(false);
    panel.settle();
    EXPECT_LT(panel.window().height(), folded);
    EXPECT_FALSE(item("NowPlayingBar"));
}

TEST_F(PanelTest, PickerOffersRealDevicesAndShowsWhatIsChosenElsewhere) {
    auto& devices = delegate().deviceManager();
    open("Output");
    EXPECT_EQ(menuEntries(), (QStringList{"Built-in Speakers", "Studio Headphones"}));
    choose("Studio Headphones");
    open("Output");
    choose("Studio Headphones"); // the same again
    open("Output");
    panel.settle(50);
    for (int index = 0; index < 2; ++index)
        EXPECT_EQ(panel.find("MenuEntry", index, panel.menu())->property("marked").toBool(),
                  index == 1);
    panel.type(Qt::Key_Escape);
    EXPECT_FALSE(panel.menu());
    EXPECT_EQ(devices.selectedDeviceID.get(), "headphones");
    devices.selectedDeviceID.set("speakers");
    EXPECT_EQ(item("OutputPicker")->property("displayText").toString(), "Built-in Speakers");
    devices.selectedDeviceID.set("gone");
    EXPECT_EQ(item("OutputPicker")->property("displayText").toString(), "");
    machine.unplugOutputs();
    open("Output");
    EXPECT_FALSE(panel.menu());
    open("Equalizer");
    EXPECT_FALSE(presets().eqEnabled.get());
}

TEST_F(PanelTest, LongListOfOutputsScrollsWithTheKeyboard) {
    for (int index = 1; index <= 30; ++index)
        (void)machine.fake().audioHardware.add(std::to_string(index), std::to_string(index));
    machine.advance(std::chrono::seconds(1));
    panel.named("Output")->forceActiveFocus(Qt::TabFocusReason);
    panel.type(Qt::Key_Space, " ");
    panel.settle(50);
    auto* const menu = panel.menu();
    ASSERT_TRUE(menu);
    EXPECT_EQ(menu->height(), 480);
    const auto isSeen = [&](int index) {
        auto* const entry = panel.find("MenuEntry", index, menu);
        const qreal top = entry->mapToScene(QPointF()).y();
        return top >= 0 && top + entry->height() <= menu->height();
    };
    EXPECT_TRUE(isSeen(0));
    EXPECT_FALSE(isSeen(31));
    panel.type(Qt::Key_End);
    EXPECT_TRUE(isSeen(31));
    panel.type(Qt::Key_Home);
    EXPECT_TRUE(isSeen(0));
    for (int step = 0; step < 31; ++step)
        panel.type(Qt::Key_Down);
    EXPECT_TRUE(isSeen(31));
    panel.type(Qt::Key_Return);
    EXPECT_FALSE(panel.menu());
    EXPECT_EQ(delegate().deviceManager().selectedDeviceID.get(), "30");
}

TEST_F(PanelTest, MenuStaysOnTheScreenAndGoesWithThePanel) {
    const QRect screen = panel.window().screen()->geometry();
    panel.window().setPosition(screen.bottomRight() - QPoint(320, 60));
    panel.settle();
    open("Output");
    ASSERT_TRUE(panel.menu());
    EXPECT_TRUE(screen.contains(panel.menu()->geometry()));
    panel.content().setShown(false);
    EXPECT_FALSE(panel.menu());
}

TEST_F(PanelTest, ChangesMadeElsewhereShowAtOnce) {
    auto& hardware = machine.fake().audioHardware;
    hardware.changeDefault(*hardware.deviceForUID("headphones"));
    machine.advance(std::chrono::seconds(1));
    EXPECT_EQ(item("OutputPicker")->property("displayText").toString(), "Studio Headphones");

    controller().isEnabled.set(true);
    machine.playTrack("Owner", "Yes");
    machine.advance(std::chrono::seconds(1));
    auto* const busy = item("NowPlayingBar")->findChild<QObject*>("busy");
    EXPECT_TRUE(busy->property("visible").toBool());
    machine.fake().httpSession.answer(
        HTTPResponse{200, R"({"toptags":{"tag":[{"name":"rock","count":99}]}})"});
    machine.advance(std::chrono::seconds(1));
    EXPECT_FALSE(busy->property("visible").toBool());
    ASSERT_TRUE(item("AutoPresetPill"));
    EXPECT_EQ(item("AutoPresetPill")->property("name").toString(), "Rock");
    EXPECT_TRUE(item("PresetPill", 2)->property("isActive").toBool());
    EXPECT_FALSE(item("PresetPill", 0)->property("isActive").toBool());
}

TEST_F(PanelTest, TheTransportGoesBackPausesAndGoesOnFromLeftToRight) {
    const struct {
        const char* name;
        const char* symbol;
        MediaCommand command;
    } buttons[] = {{"Previous track", "skip-back-fill", MediaCommand::previousTrack},
                   {"Pause", "pause-fill", MediaCommand::togglePlayPause},
                   {"Next track", "skip-forward-fill", MediaCommand::nextTrack}};
    auto& fake = machine.fake();
    fake.backgroundQueue.flush(); // the players have been asked
    panel.settle();
    machine.playTrack("Owner", "Yes");
    panel.settle();
    qreal left = 0;
    for (const auto& [name, symbol, command] : buttons) {
        SCOPED_TRACE(name);
        fake.scriptRunner.sources.clear();
        open(name);
        fake.backgroundQueue.flush();
        EXPECT_EQ(fake.scriptRunner.sources, std::vector{commandScript(command)});
        auto* const button = panel.named(QString::fromLatin1(name));
        EXPECT_EQ(button->property("symbol").toString(), QString::fromLatin1(symbol));
        EXPECT_GT(OfflinePanel::middle(button).x(), left);
        left = OfflinePanel::middle(button).x();
    }
}

TEST_F(PanelTest, VolumeRowReadsAsTheDesktopsMixer) {
    const struct {
        const VolumeTaper& taper;
        float half;
    } cases[] = {{VolumeTaper::cubeRoot, 0.125F}, {VolumeTaper::identity, 0.5F}};
    for (const auto& [taper, half] : cases) {
        OfflinePanel other(machine, taper);
        other.show();
        presets().setOutputVolume(half);
        auto* const row = other.find("QuickControlsView");
        ASSERT_TRUE(row);
        EXPECT_EQ(row->findChild<QObject*>("percentage")->property("text").toString(), "50%");
        auto* const slider = other.named("Volume");
        slider->setProperty("value", 0.25);
        EXPECT_LT(presets().outputVolume.get(), half);
        slider->setProperty("value", 0.5);
        EXPECT_FLOAT_EQ(presets().outputVolume.get(), half);
    }
}

TEST_F(PanelTest, ScaleOfTheBandsReadsFromTopToBottom) {
    open("Show EQ");
    QStringList texts;
    for (int index = 0; auto* const mark = item("ScaleMark", index); ++index)
        texts.push_back(mark->property("text").toString());
    EXPECT_EQ(texts, (QStringList{"+20", "0 dB", "-20"}));
}

TEST_F(PanelTest, BandsFollowThePointerBeyondBothEnds) {
    open("Show EQ");
    auto* const band = item("BandSlider", 2);
    panel.press(band->mapToScene({13, 75}));
    EXPECT_FLOAT_EQ(presets().bandGain(2), 0);
    for (const auto& [y, gain] : {std::pair{-60.0, 20.0F}, {260.0, -20.0F}, {37.5, 10.0F}}) {
        panel.move(band->mapToScene({13, y}));
        EXPECT_FLOAT_EQ(presets().bandGain(2), gain);
    }
    panel.release(band->mapToScene({13, 37.5}));
    panel.doubleClick(band->mapToScene({13, 20}));
    EXPECT_FLOAT_EQ(presets().bandGain(2), 0);

    presets().activePresetID.set(std::nullopt);
    const auto before = presets().presets.get();
    panel.press(band->mapToScene({13, 10}));
    panel.release(band->mapToScene({13, 10}));
    EXPECT_EQ(presets().presets.get(), before);
    EXPECT_EQ(band->property("gain").toFloat(), 0);
}

TEST_F(PanelTest, KeysStepABandAndThePreamp) {
    open("Show EQ");
    item("BandSlider", 5)->forceActiveFocus(Qt::TabFocusReason);
    panel.type(Qt::Key_Home);
    EXPECT_FLOAT_EQ(presets().bandGain(5), 0);
    panel.type(Qt::Key_Up);
    panel.type(Qt::Key_Right);
    EXPECT_FLOAT_EQ(presets().bandGain(5), 1);
    panel.type(Qt::Key_Down);
    EXPECT_FLOAT_EQ(presets().bandGain(5), 0.5F);
    presets().setBandGain(5, 19.8F);
    panel.type(Qt::Key_Up);
    EXPECT_FLOAT_EQ(presets().bandGain(5), 20);

    presets().preamp.set(-3.5F);
    panel.named("Preamp")->forceActiveFocus(Qt::TabFocusReason);
    panel.type(Qt::Key_Right);
    EXPECT_FLOAT_EQ(presets().preamp.get(), -3);
    panel.type(Qt::Key_Home);
    EXPECT_FLOAT_EQ(presets().preamp.get(), 0);
}

TEST_F(PanelTest, SpectrumIsFollowedOnlyWhileItIsSeen) {
    const auto level = [this] { return item("BandSlider")->property("spectrumLevel").toFloat(); };
    const auto play = [this](float value) {
        SpectrumAnalyzer::BandLevels levels{};
        levels.fill(value);
        delegate().spectrumData().bandLevels.set(levels);
    };
    open("Show EQ");
    play(0.5F);
    EXPECT_FLOAT_EQ(level(), 0.5F);
    panel.content().setShown(false);
    play(0.7F);
    EXPECT_FLOAT_EQ(level(), 0.5F);
    panel.content().setShown(true);
    EXPECT_FLOAT_EQ(level(), 0.7F);
}

TEST_F(PanelTest, LinkBindsThePresetToTheOutput) {
    open("Bind preset to this output device");
    const auto bound = presets().deviceBindings.get();
    ASSERT_EQ(bound.size(), 1U);
    EXPECT_EQ(bound.begin()->second, presets().activePresetID.get());
    open("Preset bound to this device");
    EXPECT_TRUE(presets().deviceBindings.get().empty());
}

TEST_F(PanelTest, GenreSwitchSaysOnceWhereNamesGo) {
    const auto tall = panel.window().height();
    open("Preset by genre");
    EXPECT_TRUE(controller().isEnabled.get());
    EXPECT_GT(panel.window().height(), tall);
    open("Understood");
    EXPECT_EQ(panel.window().height(), tall);
    open("Preset by genre");
    open("Preset by genre");
    EXPECT_EQ(panel.window().height(), tall);

    controller().currentGenre.set("Jazz");
    panel.settle();
    ASSERT_TRUE(item("AutoPresetPill"));
    EXPECT_EQ(item("AutoPresetPill")->property("name").toString(), "Jazz");
    panel.click(item("PresetPill", 1));
    EXPECT_EQ(presets().activePreset()->name, "Hip-Hop");
    EXPECT_FALSE(controller().isEnabled.get());
    EXPECT_FALSE(item("AutoPresetPill"));
}

TEST_F(PanelTest, GenreNoticeIsReadWhenThePanelCloses) {
    const auto tall = panel.window().height();
    open("Preset by genre");
    EXPECT_GT(panel.window().height(), tall);
    panel.content().setShown(false);
    panel.content().setShown(true);
    panel.settle();
    EXPECT_EQ(panel.window().height(), tall);
    EXPECT_TRUE(controller().isEnabled.get());
}

TEST_F(PanelTest, EveryControlHasANameAndTakesTheKeyboardAndEscapeCloses) {
    open("Show EQ");
    open("Settings");
    int closings = 0;
    QObject::connect(&panel.content(), &PanelContent::closeRequested, [&] { ++closings; });
    int controls = 0;
    auto* const first = panel.named("Output");
    first->forceActiveFocus(Qt::TabFocusReason);
    for (auto* control = first; controls == 0 || control != first; ++controls) {
        ASSERT_LT(controls, 200);
        EXPECT_FALSE(OfflinePanel::nameOf(control).isEmpty()) << control->metaObject()->className();
        panel.type(Qt::Key_Escape);
        EXPECT_EQ(closings, controls + 1) << OfflinePanel::nameOf(control).toStdString();
        panel.type(Qt::Key_Tab);
        auto* const next = panel.window().activeFocusItem();
        ASSERT_NE(next, control);
        control = next;
    }
    EXPECT_GT(controls, 40);
}

} // namespace

} // namespace halvo
