#include "desktop/VirtualDesktop.h"

#include "application/Tone.h"
#include "qt/StatusPainter.h"
#include "session/Player.h"
#include "session/Recorder.h"

#include <gtest/gtest.h>

#include <array>
#include <iostream>

using namespace std::chrono_literals;
using halvo::NotifierPixmap;
using halvo::StatusPainter;
using halvo::StatusPicture;
using halvo::desktop::VirtualDesktop;

namespace {

constexpr QPoint kItem{1000, 10};
constexpr int kLeft = 1;
constexpr int kRight = 3;
constexpr int kEscape = 9;

/// A new application with its tray icon for each test. All tests of a process share one desktop,
/// because Qt cannot leave a bus.
class Desktop : public testing::Test {
  protected:
    static VirtualDesktop& sharedDesktop() {
        static VirtualDesktop shared(
            {HALVO_APPLICATION, HALVO_AUDIO_DEVICE, HALVO_DRIVER_BUNDLE_PATH});
        return shared;
    }
    VirtualDesktop& desktop = sharedDesktop();

    void TearDown() override { desktop.stopApplication(); }
    void SetUp() override {
        desktop.startApplication();
        ASSERT_TRUE(desktop.waitForItem()) << desktop.application().standardError();
        VirtualDesktop::rest(1s); // the panel's views are made
    }
    bool isShown() { return !desktop.drawnArea().isEmpty(); }
    bool becomes(bool shown) {
        return VirtualDesktop::waitFor([&] { return isShown() == shown; });
    }
};

} // namespace

TEST(StatusPixels, StraightColourInNetworkByteOrder) {
    StatusPicture picture{.kind = StatusPicture::Kind::envelope,
                          .bars = {{9, 3, 19}, {21, 3, 19}},
                          .lineWidth = 6,
                          .color = halvo::Color::parse("#FF3B30")};
    const auto pixmap = NotifierPixmap::of(StatusPainter::paint(picture, {30, 22}, 1, {}));
    ASSERT_EQ(pixmap.bytes.size(), 30 * 22 * 4);
    EXPECT_EQ(pixmap.bytes.mid((11 * 30 + 9) * 4, 4).toHex(), "ffff3b30");
    EXPECT_EQ(pixmap.bytes.mid((11 * 30 + 15) * 4, 4).toHex(), "00000000");
    const QByteArray edge = pixmap.bytes.mid((0 * 30 + 9) * 4, 4);
    EXPECT_EQ(edge.mid(1).toHex(), "ff3b30") << "a faint edge has the whole colour";
    EXPECT_LT(static_cast<unsigned char>(edge[0]), 255);
}

TEST_F(Desktop, TwentyClicksOnTheItemAlternate) {
    for (int i = 0; i < 20; ++i) {
        desktop.clickItem(kItem);
        ASSERT_TRUE(becomes(i % 2 == 0)) << i;
        VirtualDesktop::rest(600ms); // not a double click
        ASSERT_EQ(isShown(), i % 2 == 0) << i;
    }
}

TEST_F(Desktop, AClickHeldForLongClosesThePanelToo) {
    desktop.clickItem(kItem);
    ASSERT_TRUE(becomes(true));
    VirtualDesktop::rest(600ms);
    desktop.clickItem(kItem, 1200ms);
    VirtualDesktop::rest(600ms);
    EXPECT_FALSE(isShown());
    desktop.clickItem(kItem);
    EXPECT_TRUE(becomes(true)) << "the next click opens it";
}

TEST_F(Desktop, TheClickAfterEscapeOpensThePanelAgain) {
    desktop.clickItem(kItem);
    ASSERT_TRUE(becomes(true));
    VirtualDesktop::rest(200ms);
    desktop.pressKey(kEscape);
    ASSERT_TRUE(becomes(false));
    desktop.clickItem(kItem);
    EXPECT_TRUE(becomes(true));
}

TEST_F(Desktop, PressesElsewhereCloseThePanelAndPressesInsideDoNot) {
    for (const int button : {kLeft, kRight}) {
        VirtualDesktop::rest(600ms);
        desktop.clickItem(kItem);
        ASSERT_TRUE(becomes(true));
        VirtualDesktop::rest(200ms);
        const QRect panel = desktop.drawnArea();
        EXPECT_EQ(panel.top(), kItem.y() + 11 + 4) << "4 points below the item";
        EXPECT_NEAR(panel.center().x(), kItem.x(), 1);
        EXPECT_EQ(panel.width(), 320);
        desktop.press(panel.center() + QPoint(0, panel.height() / 2 - 4), kLeft);
        VirtualDesktop::rest(300ms);
        EXPECT_TRUE(isShown());
        desktop.press({200, 700}, button);
        EXPECT_TRUE(becomes(false)) << "button " << button;
    }
}

TEST_F(Desktop, GrowsWithItsTopEdgeFixed) {
    desktop.clickItem(kItem);
    ASSERT_TRUE(becomes(true));
    VirtualDesktop::rest(300ms);
    const QRect before = desktop.drawnArea();
    desktop.press(before.bottomLeft() + QPoint(30, -18)); // "Show EQ"
    ASSERT_TRUE(VirtualDesktop::waitFor(
        [&] { return desktop.drawnArea().height() > before.height() + 50; }));
    EXPECT_EQ(desktop.drawnArea().topLeft(), before.topLeft());
    EXPECT_EQ(desktop.drawnArea().width(), before.width());
}

/// A tone plays, and the speakers are recorded.
class OneVolume : public Desktop {
  protected:
    static constexpr const char* kSpeakers = "acc.a";
    static constexpr const char* kDesktops = "@DEFAULT_AUDIO_SINK@";
    static constexpr double kToneDb = -23.0103; // a sine of amplitude 0.1

    halvo::session::PrivateSession& session = desktop.session();
    std::unique_ptr<halvo::session::Recorder> speakers =
        std::make_unique<halvo::session::Recorder>(session.serverSocket(), kSpeakers, 48000, 120.0);
    halvo::session::Player player{session.serverSocket(), halvo::test::sine(1000, 0.1F, 120),
                                  48000};

    void SetUp() override {
        desktop.startDriver();
        Desktop::SetUp();
    }
    void openPanel() {
        desktop.clickItem(kItem);
        ASSERT_TRUE(becomes(true));
        VirtualDesktop::rest(300ms);
    }
    /// A press on the panel's volume, which is from 0 to 1 here.
    void pressAt(double position) {
        const QRect panel = desktop.drawnArea();
        const double start = 39;
        const double width = 225;
        desktop.press(panel.bottomLeft() + QPoint(static_cast<int>(start + position * width), -60));
        VirtualDesktop::rest(300ms);
    }
    /// Without a bus: on this one, wpctl of 0.5 asks for real-time rights and waits for ever.
    halvo::session::RunResult wpctl(std::vector<std::string> arguments) {
        const std::array command{"env", "DBUS_SESSION_BUS_ADDRESS=unix:path=/none", "wpctl"};
        arguments.insert(arguments.begin(), command.begin(), command.end());
        return session.run(arguments);
    }
    double desktops() {
        const auto shown = wpctl({"get-volume", kDesktops}).output;
        return shown.starts_with("Volume: ") ? std::stod(shown.substr(8)) : -1;
    }
    bool isMuted() { return wpctl({"get-volume", kDesktops}).output.contains("MUTED"); }
    void turn(const char* option, const char* value) {
        ASSERT_EQ(wpctl({option, kDesktops, value}).status, 0);
    }
    static double loudness(double position) { return kToneDb + 60 * std::log10(position); }
};

TEST_F(OneVolume, IsThePanelsAndTheDesktops) {
    ASSERT_TRUE(
        VirtualDesktop::waitFor([&] { return session.defaultSink() == "HalvoVirtualOutput_UID"; }));
    openPanel();
    desktop.press(desktop.drawnArea().topRight() + QPoint(-28, 24)); // the equalizer is off
    turn("set-volume", "100%");
    VirtualDesktop::rest(300ms);
    pressAt(0.15);
    const double chosen = desktops();
    ASSERT_NEAR(chosen, 0.15, 0.05) << "the desktop shows what the panel chose";
    EXPECT_TRUE(halvo::test::settlesAt(*speakers, loudness(chosen)));

    speakers->clear();
    turn("set-volume", "5%-");
    EXPECT_NEAR(desktops(), chosen - 0.05, 0.005) << "one step below it";
    EXPECT_TRUE(halvo::test::settlesAt(*speakers, loudness(desktops())));
    const double loudest = halvo::test::loudestDb(speakers->recording().samples);
    EXPECT_LE(loudest, loudness(chosen) + 1);
    std::cout << "panel at " << chosen << ": " << loudness(chosen)
              << " dB; a step below it: " << loudness(desktops())
              << " dB, loudest on the way: " << loudest << " dB\n";

    turn("set-mute", "1");
    VirtualDesktop::rest(300ms);
    pressAt(0.4);
    EXPECT_FALSE(isMuted()) << "what is heard is not muted";
    EXPECT_NEAR(desktops(), 0.4, 0.05);
    EXPECT_TRUE(halvo::test::settlesAt(*speakers, loudness(desktops())));
}

TEST_F(Desktop, RegistersWithATrayThatComesLaterAndDrawsForNobodyElse) {
    desktop.tray().disappear();
    VirtualDesktop::rest(200ms);
    desktop.tray().appear();
    EXPECT_TRUE(desktop.waitForItem());
    const int quiet = desktop.tray().newIcons();
    VirtualDesktop::rest(1s);
    EXPECT_EQ(desktop.tray().newIcons(), quiet) << "nothing has changed";
}

TEST_F(Desktop, ASecondStartShowsThePanelOfTheFirst) {
    const auto second = desktop.session().run({HALVO_APPLICATION});
    EXPECT_EQ(second.status, 0) << second.output;
    EXPECT_TRUE(becomes(true));
}
