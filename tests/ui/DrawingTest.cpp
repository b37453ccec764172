#include "PanelFixture.h"

#include <functional>

namespace halvo {

namespace {

/// Counts the frames that the panel draws.
class DrawingTest : public PanelTest {
  protected:
    int framesDuring(const std::function<void(int)>& change) {
        panel.settle(400); // whatever still moves comes to rest
        int frames = 0;
        const auto counting = QObject::connect(&panel.window(), &QQuickWindow::frameSwapped,
                                               &panel.window(), [&frames] { ++frames; });
        for (int turn = 0; turn < 8; ++turn) {
            change(turn);
            panel.settle(25);
        }
        QObject::disconnect(counting);
        return frames;
    }
};

TEST_F(DrawingTest, NothingIsDrawnForWhatNobodySees) {
    machine.playTrack("Northern Lights", "The Fjord Quartet");
    const auto spectrum = [this](int turn) { machine.moveSpectrum(turn * 0.3); };
    EXPECT_EQ(framesDuring([](int) {}), 0) << "nothing changes";
    EXPECT_EQ(framesDuring(spectrum), 0) << "folded";
    open("Show EQ");
    EXPECT_EQ(framesDuring([](int) {}), 0) << "nothing changes";
    EXPECT_GE(framesDuring(spectrum), 2) << "seen";
    EXPECT_EQ(framesDuring([this](int) { machine.moveSpectrum(2.1); }), 0) << "the same levels";
    panel.content().setShown(false);
    EXPECT_EQ(framesDuring(spectrum), 0) << "closed";
}

} // namespace

} // namespace halvo
