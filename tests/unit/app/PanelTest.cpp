#include "app/PanelPlacement.h"
#include "unit/app/AppDelegateFixture.h"

namespace halvo {

TEST(PanelPlacement, HangsAtTheItemInsideTheWorkArea) {
    struct Row {
        const char* name;
        ScreenRect item;
        ScreenSize size;
        ScreenRect expected;
        ScreenSize grown;
        ScreenRect expectedGrown;
    };
    // A bar of 24 points at the top and one of 40 at the bottom.
    const ScreenArea screen{{0, 0, 1920, 1080}, {0, 24, 1920, 1016}};
    const Row rows[] = {
        {"below",
         {900, 1, 30, 22},
         {320, 200},
         {755, 27, 320, 200},
         {320, 500},
         {755, 27, 320, 500}},
        {"above",
         {900, 1049, 30, 22},
         {320, 200},
         {755, 840, 320, 200},
         {320, 500},
         {755, 540, 320, 500}},
        {"right edge",
         {1885, 1, 30, 22},
         {320, 200},
         {1600, 27, 320, 200},
         {320, 500},
         {1600, 27, 320, 500}},
        {"left edge", {5, 1, 30, 22}, {320, 200}, {0, 27, 320, 200}, {320, 500}, {0, 27, 320, 500}},
        {"an item that reaches less far than the bar",
         {900, -9, 30, 22},
         {320, 200},
         {755, 24, 320, 200},
         {320, 500},
         {755, 24, 320, 500}},
        {"too tall: its top can be seen",
         {900, 1, 30, 22},
         {320, 1100},
         {755, 24, 320, 1100},
         {320, 1200},
         {755, 24, 320, 1200}},
        {"grows beyond the bottom: moves up",
         {900, 500, 30, 22},
         {320, 200},
         {755, 526, 320, 200},
         {320, 800},
         {755, 240, 320, 800}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto frame = hangingPanel(row.item, row.size, screen);
        EXPECT_EQ(frame, row.expected);
        EXPECT_EQ(resizedPanel(frame, row.grown, row.item, screen), row.expectedGrown);
    }
}

/// The application with its panel still closed; the item is at the top of the screen.
class Panel : public AppDelegateTest {
  protected:
    FakePanelWindow& panel = fake.panelWindow;
    ScreenPoint onItem{110, 5};
    ScreenPoint elsewhere{900, 900};

    void SetUp() override {
        AppDelegateTest::SetUp();
        launchWithDriver();
    }
    void click() { fake.statusItem.action(); }
};

TEST_F(Panel, IsClosedUntilTheItemIsClicked) {
    EXPECT_EQ(fake.statusItem.length, 30);
    EXPECT_FALSE(panel.visible);
    EXPECT_FALSE(panel.pressed);
    click();
    EXPECT_TRUE(panel.visible);
    EXPECT_TRUE(panel.pressed);
    EXPECT_EQ(panel.style, PanelStyle::hanging);
    EXPECT_EQ(panel.place, (ScreenRect{0, 27, 320, 200}));
    click();
    EXPECT_FALSE(panel.visible);
    EXPECT_FALSE(panel.pressed) << "nobody listens while the panel is hidden";
}

TEST_F(Panel, PressesCloseItUnlessTheyAreInside) {
    struct Row {
        const char* name;
        std::optional<ScreenPoint> place;
        bool closes;
    };
    const Row rows[] = {{"inside", ScreenPoint{100, 100}, false},
                        {"first point", ScreenPoint{0, 27}, false},
                        {"just below", ScreenPoint{100, 227}, true},
                        {"elsewhere", elsewhere, true},
                        {"the keyboard went to another program", std::nullopt, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        settle();
        click();
        panel.press(row.place);
        EXPECT_EQ(panel.visible, !row.closes);
        EXPECT_EQ(panel.pressed == nullptr, row.closes);
        if (panel.visible) click();
    }
}

TEST_F(Panel, TwentyClicksOnTheItemAlternateThoughEachIsAnOutsidePressToo) {
    for (int i = 0; i < 20; ++i) {
        SCOPED_TRACE(i);
        panel.press(onItem);
        fake.mainQueue.advance(150ms);
        click();
        EXPECT_EQ(panel.visible, i % 2 == 0);
        settle();
    }
    // Without a place: the focus moved to the bar.
    click();
    panel.press(std::nullopt);
    click();
    EXPECT_FALSE(panel.visible);
}

TEST_F(Panel, TheClickOfAPressThatWasHeldDoesNotOpenItAgain) {
    click();
    panel.press(onItem);
    panel.isHeld = true;
    fake.mainQueue.advance(2s);
    click();
    EXPECT_FALSE(panel.visible);
    panel.isHeld = false;
    click();
    EXPECT_TRUE(panel.visible);
}

TEST_F(Panel, APressThatIsToldTooLateClosesNothingTwice) {
    click();
    const auto handler = panel.pressed;
    click();
    handler(onItem);
    click();
    EXPECT_TRUE(panel.visible);
}

TEST_F(Panel, TheClickAfterEscapeOpensItAgain) {
    click();
    panel.press(onItem); // long ago
    settle();
    for (const bool held : {false, true}) {
        click();
        panel.isHeld = held; // by somebody's last press
        panel.onClose();
        EXPECT_FALSE(panel.visible);
        EXPECT_FALSE(panel.pressed);
        click();
        EXPECT_TRUE(panel.visible);
        click();
    }
}

TEST_F(Panel, APressElsewhereDoesNotKeepTheItemFromOpening) {
    click();
    panel.press(elsewhere);
    click();
    EXPECT_TRUE(panel.visible);
}

TEST_F(Panel, FollowsItsContentWithItsTopEdgeFixed) {
    panel.content = {320, 300};
    panel.onSizeChange();
    EXPECT_EQ(panel.place, ScreenRect()) << "closed: measured when it opens";
    click();
    EXPECT_EQ(panel.place.height, 300);
    panel.content = {320, 500};
    panel.onSizeChange();
    EXPECT_EQ(panel.place, (ScreenRect{0, 27, 320, 500}));
    EXPECT_EQ(panel.lastMove, PanelMove::animated);
    click();
    panel.content = {320, 200};
    click();
    EXPECT_EQ(panel.place, (ScreenRect{0, 27, 320, 200}));
}

TEST_F(Panel, WithoutAPlaceForItemsItIsAWindowThatPressesLeaveOpen) {
    fake.statusItem.place.reset();
    click();
    EXPECT_TRUE(panel.visible);
    EXPECT_EQ(panel.style, PanelStyle::window);
    EXPECT_FALSE(panel.pressed);
}

TEST_F(Panel, IsGoneBeforeTheServicesAre) {
    click();
    delegate->applicationWillTerminate();
    EXPECT_FALSE(panel.visible);
    EXPECT_FALSE(panel.onSizeChange);
    EXPECT_FALSE(panel.onClose);
    EXPECT_FALSE(panel.pressed);
    EXPECT_FALSE(fake.statusItem.action);
}

} // namespace halvo
