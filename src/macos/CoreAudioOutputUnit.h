#pragma once

#include "platform/OutputUnit.h"

#include <AudioToolbox/AudioToolbox.h>

namespace halvo {

/// A HAL output unit: the stream to one device, rendered on Core Audio's own thread. Main thread.
class CoreAudioOutputUnit final : public OutputUnit {
  public:
    /// Takes ownership of the instance.
    explicit CoreAudioOutputUnit(AudioComponentInstance instance) : instance_(instance) {}
    ~CoreAudioOutputUnit() override;
    CoreAudioOutputUnit(const CoreAudioOutputUnit&) = delete;
    CoreAudioOutputUnit& operator=(const CoreAudioOutputUnit&) = delete;

    bool setDevice(AudioDeviceID device) override;
    bool setStreamFormat(const StreamFormat& format) override;
    bool setRenderCallback(RenderCallback callback, void* refCon) override;
    bool initialize() override;
    bool start() override;
    bool stop() override;

  private:
    static ::OSStatus render(void* refCon, AudioUnitRenderActionFlags* flags,
                             const AudioTimeStamp* timestamp, UInt32 bus, UInt32 frames,
                             AudioBufferList* data) noexcept HALVO_REALTIME;

    AudioComponentInstance instance_;
    // Written while the unit is stopped, read by the render thread.
    RenderCallback callback_ = nullptr;
    void* refCon_ = nullptr;
};

/// Creates units of the system's HAL output component. Main thread.
class CoreAudioOutputUnitFactory final : public OutputUnitFactory {
  public:
    std::unique_ptr<OutputUnit> makeOutputUnit() override;
};

} // namespace halvo
