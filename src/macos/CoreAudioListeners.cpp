#include "macos/CoreAudioListeners.h"

#include <cstddef>
#include <mutex>
#include <utility>

namespace halvo {

namespace {

constexpr auto kRestarted = CoreAudio::globalAddress(kAudioHardwarePropertyServiceRestarted);

} // namespace

struct CoreAudioListeners::Gate {
    std::recursive_mutex lock; ///< a listener may call `silence`
    bool open = true;
};

CoreAudioListeners::CoreAudioListeners() : gate_(std::make_shared<Gate>()) {}

CoreAudioListeners::~CoreAudioListeners() {
    silence();
}

std::optional<CoreAudioListener> CoreAudioListeners::make(AudioObjectID object,
                                                          const CoreAudio::Address& address,
                                                          Listener listener) const {
    return CoreAudioListener::add(object, address, dispatch_get_main_queue(),
                                  [gate = gate_, listener = std::move(listener)] {
                                      const std::scoped_lock lock(gate->lock);
                                      if (gate->open) listener();
                                  });
}

bool CoreAudioListeners::add(AudioObjectID object, const CoreAudio::Address& address,
                             Listener listener) {
    if (!restart_)
        restart_ = make(kAudioObjectSystemObject, kRestarted, [this] { serverRestarted(); });
    const auto shared = std::make_shared<const Listener>(std::move(listener));
    auto registration = make(object, address, [shared] { (*shared)(); });
    if (!registration) return false;
    entries_.push_back({std::move(*registration), shared});
    return true;
}

void CoreAudioListeners::serverRestarted() {
    ++restarts_;
    if (restart_) (void)restart_->renew(); // nothing else would tell of the next one
    // A listener may add others, which are new.
    const std::size_t count = entries_.size();
    for (std::size_t i = 0; i < count; ++i)
        (void)entries_[i].registration.renew(); // fails for a device that is a new one now
    for (std::size_t i = 0; i < count && gate_->open; ++i) {
        const auto listener = entries_[i].listener;
        (*listener)();
    }
}

void CoreAudioListeners::silence() {
    const std::scoped_lock lock(gate_->lock);
    gate_->open = false;
}

} // namespace halvo
