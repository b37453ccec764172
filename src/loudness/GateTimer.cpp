#include "loudness/GateTimer.h"

#include "loudness/OutputGate.h"

namespace halvo {

void GateTimer::closeAtLeastFor(MainQueue::Duration time) {
    if (gate_.isOpen() || mainQueue_.now() + time > opening_) closeFor(time);
}

void GateTimer::closeFor(MainQueue::Duration time) {
    opening_ = mainQueue_.now() + time;
    gate_.close();
    mainQueue_.after(time, [this, generation = ++generation_, alive = lifetime_.watch()] {
        if (alive.expired()) return;
        // After a long turn the news of the virtual device is still queued, and the core takes
        // one turn more to act on it.
        mainQueue_.async([this, generation, alive] {
            if (alive.expired()) return;
            mainQueue_.async([this, generation, alive] {
                if (!alive.expired() && generation == generation_) gate_.open();
            });
        });
    });
}

} // namespace halvo
