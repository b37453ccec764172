#include "linux/pipewire/PipeWireListeners.h"

#include <chrono>

namespace halvo {

namespace {
/// Longer than any wait of the back end inside a listener.
constexpr std::chrono::milliseconds kLongestSilencing{700};
} // namespace

PipeWireListeners::PipeWireListeners(MainQueue& mainQueue) : mainQueue_(mainQueue) {}

void PipeWireListeners::add(Topic topic, AudioDeviceID device, AudioHardware::Listener listener) {
    const std::lock_guard lock(mutex_);
    entries_[{topic, device}].push_back(std::make_shared<Entry>(std::move(listener)));
}

void PipeWireListeners::post(Topic topic, AudioDeviceID device) {
    if (gate_->silenced) return;
    const std::lock_guard lock(mutex_);
    const auto found = entries_.find({topic, device});
    if (found == entries_.end()) return;
    for (const auto& entry : found->second) {
        if (entry->pending.exchange(true)) continue;
        mainQueue_.async([gate = gate_, entry] {
            entry->pending = false;
            const std::lock_guard running(gate->running);
            if (!gate->silenced) entry->listener();
        });
    }
}

void PipeWireListeners::silence() {
    gate_->silenced = true;
    // Recursive, because a listener may call `silence`; with a limit, because the main thread may
    // hang while the system's routing still has to be restored.
    if (gate_->running.try_lock_for(kLongestSilencing)) gate_->running.unlock();
}

} // namespace halvo
