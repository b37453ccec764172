// The portable part names the host's words and records by itself; here the host's headers agree.

#include "driver/macos/AudioObject.h"
#include "driver/macos/FrameClock.h"

#include <CoreAudio/AudioServerPlugIn.h>
#include <cstddef>
#include <utility>

namespace halvo::driver {

namespace {

constexpr std::pair<std::uint32_t, std::uint32_t> kWords[]{
    {selector::kBaseClass, kAudioObjectPropertyBaseClass},
    {selector::kClass, kAudioObjectPropertyClass},
    {selector::kOwner, kAudioObjectPropertyOwner},
    {selector::kName, kAudioObjectPropertyName},
    {selector::kManufacturer, kAudioObjectPropertyManufacturer},
    {selector::kOwnedObjects, kAudioObjectPropertyOwnedObjects},
    {selector::kDeviceList, kAudioPlugInPropertyDeviceList},
    {selector::kTranslateUIDToDevice, kAudioPlugInPropertyTranslateUIDToDevice},
    {selector::kBoxList, kAudioPlugInPropertyBoxList},
    {selector::kTranslateUIDToBox, kAudioPlugInPropertyTranslateUIDToBox},
    {selector::kResourceBundle, kAudioPlugInPropertyResourceBundle},
    {selector::kDeviceUID, kAudioDevicePropertyDeviceUID},
    {selector::kModelUID, kAudioDevicePropertyModelUID},
    {selector::kTransportType, kAudioDevicePropertyTransportType},
    {selector::kRelatedDevices, kAudioDevicePropertyRelatedDevices},
    {selector::kClockDomain, kAudioDevicePropertyClockDomain},
    {selector::kIsAlive, kAudioDevicePropertyDeviceIsAlive},
    {selector::kIsRunning, kAudioDevicePropertyDeviceIsRunning},
    {selector::kCanBeDefault, kAudioDevicePropertyDeviceCanBeDefaultDevice},
    {selector::kCanBeSystemDefault, kAudioDevicePropertyDeviceCanBeDefaultSystemDevice},
    {selector::kLatency, kAudioDevicePropertyLatency},
    {selector::kLatency, kAudioStreamPropertyLatency},
    {selector::kStreams, kAudioDevicePropertyStreams},
    {selector::kControlList, kAudioObjectPropertyControlList},
    {selector::kSafetyOffset, kAudioDevicePropertySafetyOffset},
    {selector::kNominalRate, kAudioDevicePropertyNominalSampleRate},
    {selector::kAvailableRates, kAudioDevicePropertyAvailableNominalSampleRates},
    {selector::kIsHidden, kAudioDevicePropertyIsHidden},
    {selector::kStereoChannels, kAudioDevicePropertyPreferredChannelsForStereo},
    {selector::kChannelLayout, kAudioDevicePropertyPreferredChannelLayout},
    {selector::kZeroTimeStampPeriod, kAudioDevicePropertyZeroTimeStampPeriod},
    {selector::kClockAlgorithm, kAudioDevicePropertyClockAlgorithm},
    {selector::kClockIsStable, kAudioDevicePropertyClockIsStable},
    {selector::kIsActive, kAudioStreamPropertyIsActive},
    {selector::kDirection, kAudioStreamPropertyDirection},
    {selector::kTerminalType, kAudioStreamPropertyTerminalType},
    {selector::kStartingChannel, kAudioStreamPropertyStartingChannel},
    {selector::kVirtualFormat, kAudioStreamPropertyVirtualFormat},
    {selector::kVirtualFormats, kAudioStreamPropertyAvailableVirtualFormats},
    {selector::kPhysicalFormat, kAudioStreamPropertyPhysicalFormat},
    {selector::kPhysicalFormats, kAudioStreamPropertyAvailablePhysicalFormats},
    {selector::kControlScope, kAudioControlPropertyScope},
    {selector::kControlElement, kAudioControlPropertyElement},
    {selector::kScalar, kAudioLevelControlPropertyScalarValue},
    {selector::kDecibels, kAudioLevelControlPropertyDecibelValue},
    {selector::kDecibelRange, kAudioLevelControlPropertyDecibelRange},
    {selector::kScalarToDecibels, kAudioLevelControlPropertyConvertScalarToDecibels},
    {selector::kDecibelsToScalar, kAudioLevelControlPropertyConvertDecibelsToScalar},
    {selector::kSwitch, kAudioBooleanControlPropertyValue},
    {kind::kObject, kAudioObjectClassID},
    {kind::kPlugIn, kAudioPlugInClassID},
    {kind::kDevice, kAudioDeviceClassID},
    {kind::kStream, kAudioStreamClassID},
    {kind::kLevelControl, kAudioLevelControlClassID},
    {kind::kVolumeControl, kAudioVolumeControlClassID},
    {kind::kBooleanControl, kAudioBooleanControlClassID},
    {kind::kMuteControl, kAudioMuteControlClassID},
    {kind::kVirtualTransport, kAudioDeviceTransportTypeVirtual},
    {kind::kSpeaker, kAudioStreamTerminalTypeSpeaker},
    {kind::kRawClock, kAudioDeviceClockAlgorithmRaw},
    {kind::kLinearPCM, kAudioFormatLinearPCM},
    {scope::kGlobal, kAudioObjectPropertyScopeGlobal},
    {scope::kInput, kAudioObjectPropertyScopeInput},
    {scope::kOutput, kAudioObjectPropertyScopeOutput},
    {object::kUnknown, kAudioObjectUnknown},
    {object::kPlugIn, kAudioObjectPlugInObject},
};

consteval bool allAgree() {
    for (const auto& [ours, theirs] : kWords) {
        if (ours != theirs) return false;
    }
    return true;
}
static_assert(allAgree());

// The least that the host takes.
static_assert(FrameClock::kPeriod >= 10923);

static_assert(sizeof(StreamFormatRecord) == sizeof(AudioStreamBasicDescription));
static_assert(offsetof(StreamFormatRecord, formatFlags) ==
              offsetof(AudioStreamBasicDescription, mFormatFlags));
static_assert(offsetof(StreamFormatRecord, bytesPerFrame) ==
              offsetof(AudioStreamBasicDescription, mBytesPerFrame));
static_assert(offsetof(StreamFormatRecord, channelsPerFrame) ==
              offsetof(AudioStreamBasicDescription, mChannelsPerFrame));
static_assert(offsetof(StreamFormatRecord, bitsPerChannel) ==
              offsetof(AudioStreamBasicDescription, mBitsPerChannel));
static_assert(sizeof(RangedFormatRecord) == sizeof(AudioStreamRangedDescription));
static_assert(offsetof(RangedFormatRecord, sampleRates) ==
              offsetof(AudioStreamRangedDescription, mSampleRateRange));
static_assert(sizeof(RangeRecord) == sizeof(AudioValueRange));
static_assert(sizeof(ChannelRecord) == sizeof(AudioChannelDescription));
static_assert(offsetof(StereoLayoutRecord, channels) ==
              offsetof(AudioChannelLayout, mChannelDescriptions));
static_assert(kAudioChannelLayoutTag_UseChannelDescriptions == 0);
static_assert(kAudioChannelLabel_Left == 1 && kAudioChannelLabel_Right == 2);
static_assert(kAudioFormatFlagsNativeFloatPacked == (1U << 0U | 1U << 3U));

} // namespace

} // namespace halvo::driver
