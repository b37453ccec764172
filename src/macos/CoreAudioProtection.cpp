#include "macos/CoreAudioProtection.h"

#include "macos/CoreAudioDevice.h"

#include <map>
#include <mutex>
#include <utility>

namespace halvo {

namespace {

constexpr auto kDefaultOutput = CoreAudio::globalAddress(kAudioHardwarePropertyDefaultOutputDevice);
constexpr auto kRestarted = CoreAudio::globalAddress(kAudioHardwarePropertyServiceRestarted);

dispatch_queue_t makeQueue() {
    auto* const attributes = dispatch_queue_attr_make_with_qos_class(DISPATCH_QUEUE_SERIAL,
                                                                     QOS_CLASS_USER_INTERACTIVE, 0);
    return dispatch_queue_create("org.halvo.Halvo.protection", attributes);
}

} // namespace

struct CoreAudioProtection::State {
    explicit State(std::shared_ptr<CoreAudioLevels> server) : serverLevels(std::move(server)) {}

    const std::shared_ptr<CoreAudioLevels> serverLevels;
    std::mutex lock;
    std::map<std::string, DeviceLevel> levels;
    std::optional<CoreAudioListener> defaultChange;
    std::optional<CoreAudioListener> restart;

    void apply() {
        const std::scoped_lock held(lock);
        const auto device = CoreAudioDevice::defaultOutput();
        if (!device || levels.empty()) return;
        for (const auto part : CoreAudioDevice::withSubDevices(*device)) {
            const auto uid = CoreAudioDevice::uid(part);
            const auto found = uid ? levels.find(*uid) : levels.end();
            // There is no one to report a failure to.
            if (found != levels.end()) (void)serverLevels->write(part, found->second);
        }
    }
    void renew() {
        {
            const std::scoped_lock held(lock);
            if (defaultChange) (void)defaultChange->renew();
            if (restart) (void)restart->renew();
        }
        apply(); // it may have come back with another default
    }
};

CoreAudioProtection::CoreAudioProtection(std::shared_ptr<CoreAudioLevels> levels)
    : queue_(makeQueue()), state_(std::make_shared<State>(std::move(levels))) {}

CoreAudioProtection::~CoreAudioProtection() {
    {
        const std::scoped_lock lock(state_->lock);
        state_->levels.clear();
    }
    dispatch_sync(queue_, ^{
      state_->defaultChange.reset();
      state_->restart.reset();
    });
    dispatch_release(queue_);
}

void CoreAudioProtection::protect(const std::string& uid, const DeviceLevel& level) {
    const std::scoped_lock lock(state_->lock);
    state_->levels[uid] = level;
    if (!state_->defaultChange) listen();
}

void CoreAudioProtection::unprotect(const std::string& uid) {
    const std::scoped_lock lock(state_->lock);
    state_->levels.erase(uid);
}

void CoreAudioProtection::listen() {
    const std::weak_ptr<State> weak = state_;
    const auto whileThere = [weak](void (State::*work)()) {
        return [weak, work] {
            if (const auto state = weak.lock()) (state.get()->*work)();
        };
    };
    // Where the server refuses, the guard still lowers the device, on the main thread.
    state_->defaultChange = CoreAudioListener::add(kAudioObjectSystemObject, kDefaultOutput, queue_,
                                                   whileThere(&State::apply));
    state_->restart = CoreAudioListener::add(kAudioObjectSystemObject, kRestarted, queue_,
                                             whileThere(&State::renew));
}

} // namespace halvo
