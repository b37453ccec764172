#include "AnimationClock.h"
#include "PanelFixture.h"

#include <QGuiApplication>
#include <QPointingDevice>
#include <QSignalSpy>
#include <QStyleHints>
#include <QTest>
#include <QWheelEvent>

#include <functional>
#include <memory>

namespace halvo {

namespace {

using Names = std::vector<std::string>;

/// The strip with more presets than it shows at a time.
class StripScrollingTest : public PanelTest {
  protected:
    AnimationClock clock;
    QPointingDevice mouse{"mouse",
                          11,
                          QInputDevice::DeviceType::Mouse,
                          QPointingDevice::PointerType::Generic,
                          QInputDevice::Capability::Scroll,
                          1,
                          3};
    QPointingDevice touchpad{"touchpad",
                             12,
                             QInputDevice::DeviceType::TouchPad,
                             QPointingDevice::PointerType::Finger,
                             QInputDevice::Capability::PixelScroll,
                             2,
                             3};
    std::unique_ptr<QPointingDevice> screen{QTest::createTouchDevice()};

    qreal scrolled() { return item("QQuickFlickable")->property("contentX").toReal(); }
    qreal end() {
        return item("QQuickFlickable")->property("contentWidth").toReal() -
               item("QQuickFlickable")->width();
    }
    void wheel(const QPointingDevice& device, QPoint pixels, QPoint angle) {
        const auto place = OfflinePanel::middle(item("PresetStripView"));
        QWheelEvent event(place, panel.window().mapToGlobal(place), pixels, angle, {}, {},
                          Qt::NoScrollPhase, false, Qt::MouseEventNotSynthesized, &device);
        QCoreApplication::sendEvent(&panel.window(), &event);
    }
    auto finger() { return QTest::touchEvent(&panel.window(), screen.get()); }
    /// Draws a finger over the strip from one place to another, `held` on the first.
    void draw(QPointF from, QPointF to, const std::function<void()>& held = [] {}) {
        finger().press(0, from.toPoint());
        held();
        for (int step = 1; step <= 20; ++step) {
            finger().move(0, (from + (to - from) * step / 20).toPoint());
            panel.settle(1); // a move is taken with the next frame
        }
    }
};

TEST_F(StripScrollingTest, WheelsAndSwipesInEitherDirection) {
    const QPoint none;
    const struct {
        const char* name;
        const QPointingDevice& device;
        QPoint pixels;
        QPoint angle;
        qreal moved;
    } cases[] = {{"tilted wheel", mouse, none, {-120, 0}, 60},
                 {"wheel", mouse, none, {0, -120}, 60},
                 {"two fingers sideways", touchpad, {-24, 0}, {-48, 0}, 24},
                 {"two fingers upwards", touchpad, {0, -24}, {0, -48}, 24},
                 {"not quite sideways", touchpad, {-24, 3}, {-48, 6}, 24},
                 {"not quite upwards", touchpad, {3, -24}, {6, -48}, 24},
                 {"two fingers without pixels", touchpad, none, {-16, 2}, 8}};
    for (const auto& [name, device, pixels, angle, moved] : cases) {
        SCOPED_TRACE(name);
        for (int event = 1; event <= 3; ++event) // faster than it glides
            wheel(device, pixels, angle);
        clock.pass(400);
        EXPECT_DOUBLE_EQ(scrolled(), 3 * moved);
        for (int event = 1; event <= 4; ++event)
            wheel(device, -pixels, -angle);
        clock.pass(400);
        EXPECT_DOUBLE_EQ(scrolled(), 0) << "not beyond its beginning";
    }
    for (int event = 0; event < 100; ++event)
        wheel(mouse, none, {-120, 0});
    clock.pass(400);
    EXPECT_DOUBLE_EQ(scrolled(), end()) << "nor beyond its end";
    EXPECT_EQ(names(2), (Names{"R&B", "Hip-Hop"}));
}

TEST_F(StripScrollingTest, FingerScrollsWithoutChoosingOrMoving) {
    const auto from = OfflinePanel::middle(item("PresetPill", 2));
    const auto to = from - QPointF(120, 4);
    const auto follows = [this] {
        return QTest::qWaitFor([this] { return qFuzzyCompare(scrolled(), 120); });
    };
    draw(from, to);
    EXPECT_TRUE(follows());
    QTest::qWait(300); // comes to rest
    finger().release(0, to.toPoint());
    clock.pass(2000);
    EXPECT_NEAR(scrolled(), 120, 1);
    draw(to, from);
    finger().release(0, from.toPoint());
    clock.pass(2000);
    EXPECT_DOUBLE_EQ(scrolled(), 0);

    draw(from, to);
    EXPECT_TRUE(follows());
    finger().release(0, to.toPoint());
    clock.pass(2000);
    EXPECT_GT(scrolled(), 130) << "let go in motion it goes on by itself";
    EXPECT_EQ(names(3), (Names{"R&B", "Hip-Hop", "Rock"}));
    EXPECT_EQ(presets().activePreset()->name, "R&B");
}

TEST_F(StripScrollingTest, FingerThatRestedCarriesThePill) {
    auto* const hints = QGuiApplication::styleHints();
    const int usual = hints->mousePressAndHoldInterval();
    hints->setMousePressAndHoldInterval(30);
    auto* const pill = item("PresetPill", 0);
    const auto from = OfflinePanel::middle(pill);
    const auto to = from + QPointF(216, 3);
    const QSignalSpy changes(item("PresetStripView"), SIGNAL(draggingPresetIDChanged()));
    draw(from, to, [&] {
        ASSERT_TRUE(QTest::qWaitFor([&] { return pill->property("isLifted").toBool(); }));
    });
    EXPECT_FLOAT_EQ(static_cast<float>(pill->opacity()), 0.4F);
    EXPECT_EQ(changes.count(), 1) << "taken up once and not let go";
    EXPECT_EQ(names(3), (Names{"Hip-Hop", "Rock", "Jazz"}));
    finger().release(0, to.toPoint());
    hints->setMousePressAndHoldInterval(usual);
    EXPECT_FLOAT_EQ(static_cast<float>(pill->opacity()), 1);
    EXPECT_DOUBLE_EQ(scrolled(), 0);
    EXPECT_EQ(presets().activePreset()->name, "R&B");
}

TEST_F(StripScrollingTest, PillThatIsHeldAtAnEndScrollsOn) {
    const auto from = OfflinePanel::middle(item("PresetPill", 0));
    panel.press(from);
    panel.move(from + QPointF(12, 0));
    panel.move({310, from.y()});
    clock.pass(500);
    const auto held = scrolled();
    EXPECT_GT(held, 50);
    EXPECT_EQ(names(1), Names{"Hip-Hop"}) << "others go by below it";
    EXPECT_NE(names(2)[1], "R&B");
    panel.move({160, from.y()});
    const auto away = scrolled();
    clock.pass(500);
    EXPECT_EQ(scrolled(), away) << "no longer at the end";
    panel.release({160, from.y()});
}

TEST_F(StripScrollingTest, ShowsThePillThatHasTheKeyboard) {
    const auto isSeen = [this](QQuickItem* pill) {
        const auto left = pill->mapToScene(QPointF()).x();
        return left >= 0 && left + pill->width() <= panel.window().width();
    };
    const auto last = static_cast<int>(presets().presets.get().size()) - 1;
    for (const int index : {last, last / 2, 0}) {
        auto* const pill = item("PresetPill", index);
        EXPECT_FALSE(isSeen(pill)) << index;
        pill->forceActiveFocus(Qt::TabFocusReason);
        clock.pass(400);
        EXPECT_TRUE(isSeen(pill)) << index;
    }
}

TEST_F(StripScrollingTest, FingerTapsAPill) {
    const auto place = OfflinePanel::middle(item("PresetPill", 1)).toPoint();
    finger().press(0, place);
    finger().release(0, place);
    EXPECT_EQ(presets().activePreset()->name, "Hip-Hop");
}

} // namespace

} // namespace halvo
