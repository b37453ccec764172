#include "qt/QtBackgroundQueue.h"

#include <utility>

namespace halvo {

namespace {

/// One each for what a player may hold up: a poll, a command, a picture; and one to spare.
constexpr int kThreads = 4;

} // namespace

QtBackgroundQueue::QtBackgroundQueue() {
    pool_.setMaxThreadCount(kThreads);
}

QtBackgroundQueue::~QtBackgroundQueue() {
    pool_.clear();
    (void)pool_.waitForDone(); // without a limit it cannot fail
}

void QtBackgroundQueue::async(std::function<void()> work) {
    pool_.start(std::move(work));
}

} // namespace halvo
