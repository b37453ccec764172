#include "audio/AudioEngine.h"

#include "audio/SampleMath.h"
#include "platform/StandardOutput.h"

#include <algorithm>
#include <utility>

namespace halvo {

namespace {

constexpr StreamFormat kDefaultFormat{48000, 2};
constexpr float kUnityVolume = 0.999F; // from here on the volume stage is skipped

} // namespace

AudioEngine::AudioEngine(SharedMemory& memory, OutputUnitFactory& units, MainQueue& queue,
                         StandardOutput& output, DeviceLookup lookup)
    : units_(units), output_(output), lookup_(std::move(lookup)), ringBuffer_(memory),
      meter_(queue) {
    meter_.onTick = [this] { spectrum_.deliver(); };
}

AudioEngine::~AudioEngine() {
    stop();
}

void AudioEngine::start(const std::string& outputDeviceUID) {
    if (isRunning_) return;
    if (!ringBuffer_.connect()) {
        output_.print("Halvo: Could not connect to driver shared memory");
        return;
    }
    startedFormat_ = streamFormat();
    if (!ringBuffer_.format()) {
        output_.print("Halvo: The driver's ring is not ready, playing silence until it is");
    }
    eq().setSampleRate(static_cast<float>(startedFormat_.sampleRate));
    eq().resetState();
    if (startedFormat_.sampleRate < static_cast<double>(SpectrumAnalyzer::kMinimumSampleRate)) {
        output_.print("Halvo: No spectrum at this sample rate, it needs 22414 Hz or more");
    }
    setupOutputUnit(outputDeviceUID);
    isRunning_ = true; // by design also without a unit
    meter_.start();
}

void AudioEngine::stop() {
    isRunning_ = false;
    meter_.stop();
    disposeOutputUnit();
    ringBuffer_.disconnect();
}

void AudioEngine::setupOutputUnit(const std::string& deviceUID) {
    auto unit = units_.makeOutputUnit();
    if (!unit) return;
    // Results are ignored by design: a unit that cannot play is silence, not an error.
    if (const auto device = lookup_(deviceUID)) (void)unit->setDevice(*device);
    (void)unit->setStreamFormat(streamFormat());
    (void)unit->setRenderCallback(renderCallback, this);
    (void)unit->initialize();
    (void)unit->start();
    outputUnit_ = std::move(unit);
}

void AudioEngine::disposeOutputUnit() {
    if (!outputUnit_) return;
    (void)outputUnit_->stop(); // nothing could be done about a failure
    outputUnit_.reset();
}

bool AudioEngine::isRingCurrent() const {
    return isRunning_ && ringBuffer_.isCurrent() && streamFormat() == startedFormat_;
}

void AudioEngine::setCurrentPreset(std::optional<EQPreset> preset) {
    currentPreset_ = std::move(preset);
    equalizer_.setPreamp(currentPreset_ ? currentPreset_->preamp : 0.0F);
}

void AudioEngine::processBuffer(float* samples, std::int64_t frameCount,
                                std::int64_t channelCount) noexcept HALVO_REALTIME {
    process({samples, frameCount, channelCount});
}

void AudioEngine::process(const SampleBlock& block) noexcept HALVO_REALTIME {
    equalizer_.process(block);
    meter_.rawPeak.set(maximumMagnitude(block.samples()));
    meter_.captureAmplitude(block.samples());
    feedSpectrum(block);
    const float volume = outputVolume_.load(std::memory_order_relaxed);
    if (volume < kUnityVolume) scaleSamples(block.samples(), volume);
}

void AudioEngine::feedSpectrum(const SampleBlock& block) noexcept HALVO_REALTIME {
    const auto ring = ringBuffer_.format();
    const auto rate =
        ring ? static_cast<float>(ring->sampleRate) : static_cast<float>(kDefaultFormat.sampleRate);
    if (rate < SpectrumAnalyzer::kMinimumSampleRate) return;
    spectrum_.feed(block, rate);
}

void AudioEngine::render(const RenderBuffer& buffer,
                         std::uint32_t frameCount) noexcept HALVO_REALTIME {
    const SampleBlock block(buffer.data, frameCount, buffer.channels);
    const auto got = ringBuffer_.readFrames(buffer.data, frameCount, buffer.channels);
    // Silence for what is missing, never stale sound.
    std::ranges::fill(block.samples().subspan(sampleCount(got, buffer.channels)), 0.0F);
    process(block);
}

StreamFormat AudioEngine::streamFormat() const {
    const auto ring = ringBuffer_.format();
    if (!ring) return kDefaultFormat;
    return {static_cast<double>(ring->sampleRate), ring->channelCount};
}

OSStatus renderCallback(void* inRefCon, std::uint32_t*, const RenderTimestamp*, std::uint32_t,
                        std::uint32_t inNumberFrames,
                        RenderBufferList* ioData) noexcept HALVO_REALTIME {
    if (!ioData || ioData->count == 0 || !ioData->buffers[0].data) return kNoErr;
    static_cast<AudioEngine*>(inRefCon)->render(ioData->buffers[0], inNumberFrames);
    return kNoErr;
}

} // namespace halvo
