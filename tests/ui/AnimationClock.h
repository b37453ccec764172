#pragma once

#include <QAnimationDriver>
#include <QCoreApplication>
#include <QVariantAnimation>

namespace halvo {

/// While it lives, animations move only when their time is made to pass.
class AnimationClock : public QAnimationDriver {
  public:
    static constexpr int kFrame = 10;

    AnimationClock() {
        install();
        // Between animations the toolkit would go by its own time.
        unending_.setLoopCount(-1);
        unending_.start();
    }

    void pass(int milliseconds) {
        for (const auto until = elapsed_ + milliseconds; elapsed_ < until;) {
            QCoreApplication::processEvents(); // what was started begins, in two turns
            elapsed_ += kFrame;
            advance();
        }
        QCoreApplication::processEvents();
    }
    qint64 elapsed() const override { return elapsed_; }

  private:
    QVariantAnimation unending_;
    qint64 elapsed_ = 0;
};

} // namespace halvo
