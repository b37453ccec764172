#pragma once

#include "macos/CoreAudioProperty.h"

#include <dispatch/dispatch.h>

#include <functional>
#include <optional>

namespace halvo {

/// One listener to a property, for as long as the object lives. A call that has begun when it is
/// destroyed runs on: `notify` must hold what it uses. Any thread.
class CoreAudioListener {
  public:
    /// `notify` is called on `queue`. Nothing when the server refuses.
    static std::optional<CoreAudioListener> add(AudioObjectID object,
                                                const CoreAudio::Address& address,
                                                dispatch_queue_t queue,
                                                std::function<void()> notify);
    CoreAudioListener(CoreAudioListener&& other) noexcept;
    CoreAudioListener& operator=(CoreAudioListener&& other) noexcept;
    ~CoreAudioListener();

    /// Listens again, once the server has forgotten everybody at its restart. False when the object
    /// is not there any more.
    bool renew();

  private:
    CoreAudioListener(AudioObjectID object, const CoreAudio::Address& address,
                      dispatch_queue_t queue, AudioObjectPropertyListenerBlock block)
        : object_(object), address_(address), queue_(queue), block_(block) {}

    AudioObjectID object_;
    CoreAudio::Address address_;
    dispatch_queue_t queue_;
    AudioObjectPropertyListenerBlock block_; ///< null once it is moved away
};

} // namespace halvo
