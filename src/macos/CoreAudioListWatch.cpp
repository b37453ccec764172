#include "macos/CoreAudioListWatch.h"

#include <algorithm>
#include <utility>

namespace halvo {

CoreAudioListWatch::CoreAudioListWatch(CoreAudioListeners& listeners,
                                       const CoreAudio::Address& list,
                                       std::vector<CoreAudio::Address> properties,
                                       CoreAudioListeners::Listener changed)
    : listeners_(listeners), list_(list), properties_(std::move(properties)),
      changed_(std::move(changed)), restarts_(listeners.restarts()) {
    if (!CoreAudio::has(kAudioObjectSystemObject, list_)) return;
    isListening_ = listeners_.add(kAudioObjectSystemObject, list_, [this] {
        update();
        changed_();
    });
    update();
}

void CoreAudioListWatch::update() {
    // A restarted server has forgotten everybody, and may give a number a second time.
    const auto restarts = listeners_.restarts();
    if (std::exchange(restarts_, restarts) != restarts) objects_.clear();
    const auto listed = CoreAudio::readList<AudioObjectID>(kAudioObjectSystemObject, list_);
    if (!listed) return;
    std::erase_if(objects_, [&listed](const auto& entry) {
        return std::ranges::find(*listed, entry.first) == listed->end();
    });
    for (const auto object : *listed) {
        if (objects_.contains(object)) continue;
        auto& registrations = objects_[object];
        for (const auto& property : properties_) {
            // Not every object has every property.
            if (auto made = listeners_.make(object, property, changed_)) {
                registrations.push_back(std::move(*made));
            }
        }
    }
}

} // namespace halvo
