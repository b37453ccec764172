#include "macos/CoreAudioOutputUnit.h"

#include <cstring>

namespace halvo {

namespace {

constexpr AudioUnitElement kOutputBus = 0;

template <typename Value>
bool set(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope, const Value& value) {
    return AudioUnitSetProperty(unit, property, scope, kOutputBus, &value, sizeof(value)) == noErr;
}

AudioStreamBasicDescription describe(const StreamFormat& format) {
    AudioStreamBasicDescription description{};
    description.mSampleRate = format.sampleRate;
    description.mFormatID = kAudioFormatLinearPCM;
    description.mFormatFlags = static_cast<AudioFormatFlags>(kAudioFormatFlagIsFloat) |
                               static_cast<AudioFormatFlags>(kAudioFormatFlagIsPacked);
    description.mBytesPerPacket = format.bytesPerFrame();
    description.mFramesPerPacket = 1;
    description.mBytesPerFrame = format.bytesPerFrame();
    description.mChannelsPerFrame = format.channels;
    description.mBitsPerChannel = 32;
    return description;
}

/// Nobody fills what stands behind the first buffer.
void silenceRest(AudioBufferList& list) noexcept HALVO_REALTIME {
    for (UInt32 i = 1; i < list.mNumberBuffers; ++i) {
        AudioBuffer& buffer = list.mBuffers[i];
        if (buffer.mData) std::memset(buffer.mData, 0, buffer.mDataByteSize);
    }
}

} // namespace

CoreAudioOutputUnit::~CoreAudioOutputUnit() {
    (void)stop(); // may be stopped already
    (void)AudioComponentInstanceDispose(instance_);
}

bool CoreAudioOutputUnit::setDevice(AudioDeviceID device) {
    return set(instance_, kAudioOutputUnitProperty_CurrentDevice, kAudioUnitScope_Global, device);
}

bool CoreAudioOutputUnit::setStreamFormat(const StreamFormat& format) {
    sampleRate_ = format.sampleRate;
    return set(instance_, kAudioUnitProperty_StreamFormat, kAudioUnitScope_Input, describe(format));
}

bool CoreAudioOutputUnit::setRenderCallback(RenderCallback callback, void* refCon) {
    callback_ = callback;
    refCon_ = refCon;
    return set(instance_, kAudioUnitProperty_SetRenderCallback, kAudioUnitScope_Input,
               AURenderCallbackStruct{render, this});
}

bool CoreAudioOutputUnit::initialize() {
    output_.prepare(sampleRate_);
    return AudioUnitInitialize(instance_) == noErr;
}

bool CoreAudioOutputUnit::start() {
    own_.willStart(instance_);
    return AudioOutputUnitStart(instance_) == noErr;
}

bool CoreAudioOutputUnit::stop() {
    const bool isDone = AudioOutputUnitStop(instance_) == noErr;
    own_.didStop(instance_);
    return isDone;
}

::OSStatus CoreAudioOutputUnit::render(void* refCon, AudioUnitRenderActionFlags* flags,
                                       const AudioTimeStamp* timestamp, UInt32 bus, UInt32 frames,
                                       AudioBufferList* data) noexcept HALVO_REALTIME {
    auto* unit = static_cast<CoreAudioOutputUnit*>(refCon);
    const RenderTimestamp time{timestamp ? timestamp->mSampleTime : 0};
    if (!data) return unit->callback_(unit->refCon_, flags, &time, bus, frames, nullptr);
    // Interleaved: there is one buffer, and the engine fills no other.
    RenderBuffer buffer;
    RenderBufferList list{data->mNumberBuffers > 0 ? 1U : 0U, &buffer};
    if (list.count > 0) {
        const AudioBuffer& first = data->mBuffers[0];
        buffer = {first.mNumberChannels, first.mDataByteSize, static_cast<float*>(first.mData)};
    }
    const auto status = unit->callback_(unit->refCon_, flags, &time, bus, frames, &list);
    if (buffer.data) unit->output_.process(buffer.data, frames, buffer.channels);
    silenceRest(*data);
    return status;
}

std::unique_ptr<OutputUnit> CoreAudioOutputUnitFactory::makeOutputUnit() {
    const AudioComponentDescription wanted{.componentType = kAudioUnitType_Output,
                                           .componentSubType = kAudioUnitSubType_HALOutput,
                                           .componentManufacturer = kAudioUnitManufacturer_Apple,
                                           .componentFlags = 0,
                                           .componentFlagsMask = 0};
    AudioComponent component = AudioComponentFindNext(nullptr, &wanted);
    AudioComponentInstance instance = nullptr;
    if (!component || AudioComponentInstanceNew(component, &instance) != noErr) return nullptr;
    return std::make_unique<CoreAudioOutputUnit>(instance, gate_, own_);
}

} // namespace halvo
