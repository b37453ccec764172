#include "AnimationClock.h"
#include "PanelFixture.h"

#include "qt/QtPanelWindow.h"

#include <algorithm>
#include <functional>
#include <vector>

namespace halvo {

namespace {

/// The window that the desktop shows, below an item or above it.
class PanelWindowTest : public PanelTest {
  protected:
    AnimationClock clock;
    QtPanelWindow window{{.mainQueue = machine.fake().mainQueue,
                          .volumeTaper = VolumeTaper::identity,
                          .quit = [] {},
                          .watchPresses = [](auto, auto) { return nullptr; },
                          .hasCompositor = [] { return true; }}};
    bool isAbove = false;
    std::vector<int> heights; ///< that the window has had since the last click

    void SetUp() override {
        window.setContent(machine.services(),
                          {.onSizeChange = [this] { follow(); }, .onClose = nullptr});
        const auto size = window.fittingSize();
        window.setFrame({100, 200, size.width, size.height}, PanelMove::immediate);
        QObject::connect(window.window(), &QWindow::heightChanged, &panel.window(),
                         [this](int height) { heights.push_back(height); });
        window.orderFront(PanelStyle::hanging);
        panel.settle(50);
    }
    /// With the edge fixed that is at the item.
    void follow() {
        const auto old = window.frame();
        const auto size = window.fittingSize();
        const double y = isAbove ? old.y + old.height - size.height : old.y;
        window.setFrame({old.x, y, size.width, size.height}, PanelMove::animated);
    }
    void click(const char* name) {
        auto* const control = panel.named(QString::fromUtf8(name), window.window());
        ASSERT_TRUE(control) << name;
        heights.clear();
        panel.click(control);
        panel.settle();
    }
    /// Lets a default animation pass; `seen` looks at each step.
    template <typename Seen> void pass(Seen seen) {
        for (int frame = 0; frame < 30; ++frame) {
            seen();
            clock.pass(AnimationClock::kFrame);
            panel.settle(1);
        }
    }
    int fitting() { return static_cast<int>(window.fittingSize().height); }
};

TEST_F(PanelWindowTest, FollowsItsContentInSteps) {
    for (const bool above : {false, true}) {
        isAbove = above;
        for (const char* fold : {"Show EQ", "Hide EQ"}) {
            SCOPED_TRACE(fold);
            const QRect before = window.window()->geometry();
            click(fold);
            EXPECT_EQ(window.frame().height, fitting()) << "where it is going";
            pass([&] {
                const QRect now = window.window()->geometry();
                EXPECT_TRUE(above ? now.bottom() == before.bottom() : now.top() == before.top());
                EXPECT_EQ(panel.find("QQuickRectangle", 0, window.window())->height(), now.height())
                    << "filled";
            });
            EXPECT_GT(heights.size(), 10U);
            EXPECT_EQ(window.window()->height(), fitting());
            EXPECT_TRUE(fitting() > before.height()
                            ? std::ranges::is_sorted(heights)
                            : std::ranges::is_sorted(heights, std::greater{}))
                << "no way back";
        }
    }
}

TEST_F(PanelWindowTest, KeepsUpWithTheClosingColorEditor) {
    click("Settings");
    click("Add custom color");
    pass([] {});
    click("Add custom color");
    pass([&] { EXPECT_EQ(window.window()->height(), fitting()); });
    EXPECT_GT(heights.size(), 10U);
}

TEST_F(PanelWindowTest, StopsOnTheWayWhenItIsClosed) {
    click("Show EQ");
    clock.pass(50);
    window.orderOut();
    window.setFrame({300, 400, 320, 200}, PanelMove::immediate);
    clock.pass(300);
    EXPECT_EQ(window.frame(), (ScreenRect{300, 400, 320, 200}));

    window.orderFront(PanelStyle::hanging);
    panel.settle(50);
    click("Hide EQ");
    clock.pass(50);
    window.removeContent();
    clock.pass(300);
    EXPECT_EQ(window.frame(), ScreenRect());
}

} // namespace

} // namespace halvo
