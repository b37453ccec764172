#pragma once

#include "audio/AudioMeter.h"
#include "audio/EqualizerStage.h"
#include "audio/SampleBlock.h"
#include "audio/SharedRingBufferReader.h"
#include "audio/SpectrumAnalyzer.h"
#include "base/EQPreset.h"
#include "base/Realtime.h"
#include "platform/OutputUnit.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace halvo {

class MainQueue;
class StandardOutput;

/// The real-time path: pulls frames from the ring inside the output unit's render callback and
/// applies preamp, equalizer, soft clip and output volume. Everything here is for the main thread,
/// but what is marked for the render thread.
class AudioEngine {
  public:
    /// Finds the device for a UID, as `DeviceManager::audioDeviceID` does.
    using DeviceLookup = std::function<std::optional<AudioDeviceID>(const std::string& uid)>;

    AudioEngine(SharedMemory& memory, OutputUnitFactory& units, MainQueue& queue,
                StandardOutput& output, DeviceLookup lookup);
    ~AudioEngine();

    /// Maps the ring and plays to the named device. Without a ring it prints why and stays stopped;
    /// with one it counts as running even if no output unit could be made.
    void start(const std::string& outputDeviceUID);
    void stop();
    /// Builds, configures and starts a new output unit. A UID that is not known leaves the unit on
    /// the system's default output.
    void setupOutputUnit(const std::string& deviceUID);
    /// Stops and disposes of the output unit, if any; ring, filters and `isRunning` stay.
    void disposeOutputUnit();

    bool isRunning() const { return isRunning_; }
    bool hasOutputUnit() const { return outputUnit_ != nullptr; }
    /// Whether the engine runs on the object that the ring's name stands for, in the format that it
    /// was started with.
    bool isRingCurrent() const;
    SharedRingBufferReader& ringBuffer() { return ringBuffer_; }
    TenBandEQ& eq() { return equalizer_.bands(); }
    AudioMeter& meter() { return meter_; }
    SpectrumAnalyzer& spectrum() { return spectrum_; }

    /// The preset whose preamp is applied; absent means no preamp.
    const std::optional<EQPreset>& currentPreset() const { return currentPreset_; }
    void setCurrentPreset(std::optional<EQPreset> preset);
    /// Linear gain, applied last; from 0.999 on the samples stay as they are.
    float outputVolume() const { return outputVolume_.load(std::memory_order_relaxed); }
    void setOutputVolume(float volume) { outputVolume_.store(volume, std::memory_order_relaxed); }
    /// When off, only the output volume is applied.
    bool eqEnabled() const { return equalizer_.isEnabled(); }
    void setEQEnabled(bool enabled) { equalizer_.setEnabled(enabled); }

    /// Processes interleaved samples in place. Meter and spectrum hear them before the volume.
    /// Negative counts end the process. Render thread.
    void processBuffer(float* samples, std::int64_t frameCount,
                       std::int64_t channelCount) noexcept HALVO_REALTIME;

  private:
    friend OSStatus renderCallback(void*, std::uint32_t*, const RenderTimestamp*, std::uint32_t,
                                   std::uint32_t, RenderBufferList*) noexcept HALVO_REALTIME;
    void render(const RenderBuffer& buffer, std::uint32_t frameCount) noexcept HALVO_REALTIME;
    void process(const SampleBlock& block) noexcept HALVO_REALTIME;
    void feedSpectrum(const SampleBlock& block) noexcept HALVO_REALTIME;
    StreamFormat streamFormat() const;

    // Main thread.
    OutputUnitFactory& units_;
    StandardOutput& output_;
    DeviceLookup lookup_;
    bool isRunning_ = false;
    std::optional<EQPreset> currentPreset_;
    StreamFormat startedFormat_;
    // Shared.
    std::atomic<float> outputVolume_{1};
    EqualizerStage equalizer_;
    // Render thread while the unit runs.
    SharedRingBufferReader ringBuffer_;
    AudioMeter meter_;
    SpectrumAnalyzer spectrum_;
    // Last, so that rendering ends before what it uses.
    std::unique_ptr<OutputUnit> outputUnit_;
};

/// The output unit's callback; `inRefCon` is the engine. Fills the list's first buffer and nothing
/// else. Render thread.
OSStatus renderCallback(void* inRefCon, std::uint32_t* ioActionFlags,
                        const RenderTimestamp* inTimestamp, std::uint32_t inBusNumber,
                        std::uint32_t inNumberFrames,
                        RenderBufferList* ioData) noexcept HALVO_REALTIME;

} // namespace halvo
