#pragma once

#include "loudness/GatedOutput.h"
#include "macos/CoreAudioOwnOutput.h"
#include "platform/OutputUnit.h"

#include <AudioToolbox/AudioToolbox.h>

namespace halvo {

/// A HAL output unit: the stream to one device, rendered on Core Audio's own thread. Main thread.
class CoreAudioOutputUnit final : public OutputUnit {
  public:
    /// Takes ownership of the instance; the others must outlive the unit.
    CoreAudioOutputUnit(AudioComponentInstance instance, const OutputGate& gate,
                        CoreAudioOwnOutput& own)
        : instance_(instance), own_(own), output_(gate) {}
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
    CoreAudioOwnOutput& own_;
    double sampleRate_ = 48000;
    // Written while the unit is stopped, read by the render thread.
    RenderCallback callback_ = nullptr;
    void* refCon_ = nullptr;
    GatedOutput output_;
};

/// Creates units of the system's HAL output component, which share one gate; it and `own` must
/// outlive every unit. Main thread.
class CoreAudioOutputUnitFactory final : public OutputUnitFactory {
  public:
    CoreAudioOutputUnitFactory(const OutputGate& gate, CoreAudioOwnOutput& own)
        : gate_(gate), own_(own) {}

    std::unique_ptr<OutputUnit> makeOutputUnit() override;

  private:
    const OutputGate& gate_;
    CoreAudioOwnOutput& own_;
};

} // namespace halvo
