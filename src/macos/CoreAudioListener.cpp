#include "macos/CoreAudioListener.h"

#include <Block.h>
#include <memory>
#include <utility>

namespace halvo {

std::optional<CoreAudioListener> CoreAudioListener::add(AudioObjectID object,
                                                        const CoreAudio::Address& address,
                                                        dispatch_queue_t queue,
                                                        std::function<void()> notify) {
    const auto work = std::make_shared<const std::function<void()>>(std::move(notify));
    AudioObjectPropertyListenerBlock block = Block_copy(^(UInt32, const CoreAudio::Address*) {
      (*work)();
    });
    CoreAudioListener listener(object, address, queue, block);
    const auto status = AudioObjectAddPropertyListenerBlock(object, &address, queue, block);
    if (status != kAudioHardwareNoError) return std::nullopt;
    return listener;
}

CoreAudioListener::CoreAudioListener(CoreAudioListener&& other) noexcept
    : object_(other.object_), address_(other.address_), queue_(other.queue_),
      block_(std::exchange(other.block_, nullptr)) {}

CoreAudioListener& CoreAudioListener::operator=(CoreAudioListener&& other) noexcept {
    std::swap(object_, other.object_);
    std::swap(address_, other.address_);
    std::swap(queue_, other.queue_);
    std::swap(block_, other.block_);
    return *this;
}

CoreAudioListener::~CoreAudioListener() {
    if (block_ == nullptr) return;
    // Fails where it was refused, or where the object has gone.
    (void)AudioObjectRemovePropertyListenerBlock(object_, &address_, queue_, block_);
    Block_release(block_);
}

bool CoreAudioListener::renew() {
    // A server that has not forgotten it would call it twice.
    (void)AudioObjectRemovePropertyListenerBlock(object_, &address_, queue_, block_);
    return AudioObjectAddPropertyListenerBlock(object_, &address_, queue_, block_) ==
           kAudioHardwareNoError;
}

} // namespace halvo
