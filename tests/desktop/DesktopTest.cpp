#include "desktop/VirtualDesktop.h"

#include "qt/StatusPainter.h"

#include <gtest/gtest.h>

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
