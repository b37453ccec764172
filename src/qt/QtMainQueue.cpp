#include "qt/QtMainQueue.h"

#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

namespace halvo {

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

const QString kPeriodic = QStringLiteral("periodic");

/// The event loop counts whole milliseconds; rounded up, work never runs too early.
Milliseconds wholeMilliseconds(Clock::duration delay) {
    return std::max(Milliseconds(0), std::chrono::ceil<Milliseconds>(delay));
}

QTimer* makeTimer(QObject& parent) {
    auto* timer = new QTimer(&parent);
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    return timer;
}

QTimer* startOnce(QObject& parent, Clock::duration delay, MainQueue::Work work) {
    auto* timer = makeTimer(parent);
    QObject::connect(timer, &QTimer::timeout, timer, &QObject::deleteLater);
    QObject::connect(timer, &QTimer::timeout, timer, std::move(work));
    timer->start(wholeMilliseconds(delay));
    return timer;
}

/// Stops a timer, even from its own work or after its queue is gone.
Subscription cancellation(QTimer* timer) {
    return Subscription([guarded = QPointer<QTimer>(timer)] {
        if (!guarded) return;
        guarded->stop();
        guarded->disconnect();
        guarded->deleteLater();
    });
}

/// The next point of the grid that lies in the future.
Clock::time_point nextTick(Clock::time_point last, Clock::duration period) {
    const auto missed = (Clock::now() - last) / period;
    return last + period * (std::max<Clock::rep>(missed, 0) + 1);
}

} // namespace

void QtMainQueue::async(Work work) {
    QMetaObject::invokeMethod(&context_, std::move(work), Qt::QueuedConnection);
}

void QtMainQueue::after(Duration delay, Work work) {
    startOnce(context_, delay, std::move(work));
}

Subscription QtMainQueue::afterCancellable(Duration delay, Work work) {
    return cancellation(startOnce(context_, delay, std::move(work)));
}

Subscription QtMainQueue::every(Duration period, Work work) {
    const Clock::duration step = std::max(period, Duration(1000));
    auto* timer = makeTimer(context_);
    auto tick = std::make_shared<Clock::time_point>(Clock::now() + step);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, tick, step, work = std::move(work)] {
        *tick = nextTick(*tick, step);
        timer->start(wholeMilliseconds(*tick - Clock::now()));
        work();
    });
    timer->setObjectName(kPeriodic);
    timer->start(wholeMilliseconds(step));
    restSoon();
    return cancellation(timer);
}

void QtMainQueue::setQuiet(bool quiet) {
    async([this, quiet] {
        if (quiet == std::exchange(quiet_, quiet)) return;
        quiet ? restSoon() : wake();
    });
}

void QtMainQueue::setWatch(std::function<bool()> isWatched) {
    isWatched_ = std::move(isWatched);
    restSoon();
}

void QtMainQueue::stir() {
    wake(); // in silence too: what is shown is out of date
}

void QtMainQueue::wake() {
    for (auto* timer : context_.findChildren<QTimer*>(kPeriodic)) {
        if (!timer->isActive()) timer->start(0);
    }
    restSoon();
}

/// Checks again every `untilRest_`, until it may pause.
void QtMainQueue::restSoon() {
    rest_.cancel();
    if (!quiet_ && !isWatched_) return;
    rest_ = afterCancellable(untilRest_, [this] {
        const auto timers = context_.findChildren<QTimer*>(kPeriodic);
        if (timers.isEmpty()) return;
        if (!mayRest()) return restSoon();
        for (auto* timer : timers)
            timer->stop();
    });
}

} // namespace halvo
