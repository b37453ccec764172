#include "driver/macos/PlugIn.h"

#include "platform/RingLayout.h"

#include <array>
#include <dispatch/dispatch.h>
#include <mach/mach_time.h>
#include <syslog.h>

namespace halvo::driver {

namespace {

Timebase hostTimebase() {
    mach_timebase_info_data_t information{};
    return mach_timebase_info(&information) == 0 ? Timebase{information.numer, information.denom}
                                                 : Timebase{};
}

OSStatus statusOf(PropertyError error) {
    switch (error) {
    case PropertyError::noObject:
        return kAudioHardwareBadObjectError;
    case PropertyError::noProperty:
        return kAudioHardwareUnknownPropertyError;
    case PropertyError::wrongSize:
        return kAudioHardwareBadPropertySizeError;
    case PropertyError::notSettable:
        return kAudioHardwareUnsupportedOperationError;
    case PropertyError::wrongFormat:
        return kAudioDeviceUnsupportedFormatError;
    case PropertyError::wrongValue:
        return kAudioHardwareIllegalOperationError;
    }
    return kAudioHardwareUnspecifiedError;
}

PropertyAddress addressOf(const AudioObjectPropertyAddress& address) {
    return {address.mSelector, address.mScope, address.mElement};
}

/// The text of a qualifier that is a string object; only one property takes such a one.
std::string qualifierText(UInt32 selector, std::span<const std::byte> qualifier) {
    if (selector != selector::kTranslateUIDToDevice) return {};
    const auto text = recordOf<CFStringRef>(qualifier);
    std::array<char, 256> buffer{};
    const bool fits = text && *text != nullptr &&
                      CFStringGetCString(*text, buffer.data(), CFIndex{buffer.size()},
                                         kCFStringEncodingUTF8) != 0;
    return fits ? buffer.data() : std::string();
}

OSStatus copyText(const std::string& text, std::span<std::byte> data, UInt32& size) {
    if (data.size() < sizeof(CFStringRef)) return kAudioHardwareBadPropertySizeError;
    // The caller releases it.
    CFStringRef string = CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingUTF8);
    if (string == nullptr) return kAudioHardwareUnspecifiedError;
    std::memcpy(data.data(), &string, sizeof string);
    size = sizeof string;
    return kAudioHardwareNoError;
}

} // namespace

// The application runs as the user, the host of plug-ins as a user of the system's own.
PlugIn::PlugIn() : device_(kRingName, RingAccess::everybody, hostTimebase()) {}

OSStatus PlugIn::initialize(AudioServerPlugInHostRef host) {
    host_ = host;
    const std::string problem = device_.ringProblem();
    if (!problem.empty()) syslog(LOG_ERR, "Halvo: the ring cannot be made: %s", problem.c_str());
    return kAudioHardwareNoError;
}

OSStatus PlugIn::performConfigurationChange(AudioObjectID device, UInt64 action) {
    if (device != object::kDevice) return kAudioHardwareBadObjectError;
    const bool isSet = device_.setRate(static_cast<std::uint32_t>(action), mach_absolute_time());
    return isSet ? kAudioHardwareNoError : kAudioHardwareIllegalOperationError;
}

bool PlugIn::hasProperty(AudioObjectID id, const AudioObjectPropertyAddress& address) const {
    return objects_.has(id, addressOf(address));
}

OSStatus PlugIn::isSettable(AudioObjectID id, const AudioObjectPropertyAddress& address,
                            Boolean& settable) const {
    const auto answer = objects_.isSettable(id, addressOf(address));
    if (!answer) return statusOf(answer.error());
    settable = *answer ? 1 : 0;
    return kAudioHardwareNoError;
}

OSStatus PlugIn::dataSize(AudioObjectID id, const AudioObjectPropertyAddress& address,
                          UInt32& size) const {
    const auto answer = objects_.size(id, addressOf(address));
    if (!answer) return statusOf(answer.error());
    size = static_cast<UInt32>(*answer);
    return kAudioHardwareNoError;
}

OSStatus PlugIn::data(AudioObjectID id, const AudioObjectPropertyAddress& address,
                      std::span<const std::byte> qualifier, std::span<std::byte> data,
                      UInt32& size) const {
    const std::string text = qualifierText(address.mSelector, qualifier);
    const auto value = objects_.read(id, addressOf(address), text, data);
    if (!value) return statusOf(value.error());
    if (value->text()) return copyText(*value->text(), data, size);
    const auto copied = value->copyTo(data);
    if (!copied) return statusOf(copied.error());
    size = static_cast<UInt32>(*copied);
    return kAudioHardwareNoError;
}

OSStatus PlugIn::setData(AudioObjectID id, const AudioObjectPropertyAddress& address,
                         std::span<const std::byte> data) {
    const auto change = objects_.write(id, addressOf(address), data);
    if (!change) return statusOf(change.error());
    announce(id, *change);
    return kAudioHardwareNoError;
}

void PlugIn::announce(ObjectID id, const PropertyChange& change) {
    if (host_ == nullptr) return;
    std::vector<AudioObjectPropertyAddress> addresses;
    for (const std::uint32_t selector : change.selectors)
        addresses.push_back({selector, scope::kGlobal, kAudioObjectPropertyElementMain});
    if (!addresses.empty()) {
        host_->PropertiesChanged(host_, id, static_cast<UInt32>(addresses.size()),
                                 addresses.data());
    }
    if (!change.rate) return;
    // Not from within the host's own call: its answer may come at once.
    const AudioServerPlugInHostRef host = host_;
    const UInt64 rate = *change.rate;
    dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0), ^{
      host->RequestDeviceConfigurationChange(host, object::kDevice, rate, nullptr);
    });
}

OSStatus PlugIn::startIO(AudioObjectID device) {
    if (device != object::kDevice) return kAudioHardwareBadObjectError;
    const bool isStarted = device_.startIO(mach_absolute_time());
    return isStarted ? kAudioHardwareNoError : kAudioHardwareIllegalOperationError;
}

OSStatus PlugIn::stopIO(AudioObjectID device) {
    if (device != object::kDevice) return kAudioHardwareBadObjectError;
    return device_.stopIO() ? kAudioHardwareNoError : kAudioHardwareNotRunningError;
}

OSStatus PlugIn::zeroTimeStamp(AudioObjectID device, Float64& sampleTime, UInt64& hostTime,
                               UInt64& seed) const noexcept HALVO_REALTIME {
    if (device != object::kDevice) return kAudioHardwareBadObjectError;
    const ZeroTimeStamp stamp = device_.zeroTimeStamp(mach_absolute_time());
    sampleTime = static_cast<Float64>(stamp.frame);
    hostTime = stamp.hostTime;
    seed = stamp.seed;
    return kAudioHardwareNoError;
}

OSStatus PlugIn::doOperation(AudioObjectID stream, UInt32 operation, UInt32 frames,
                             const void* buffer) noexcept HALVO_REALTIME {
    if (stream != object::kStream) return kAudioHardwareBadObjectError;
    if (operation == kAudioServerPlugInIOOperationWriteMix && buffer != nullptr) {
        device_.write(static_cast<const float*>(buffer), frames);
    }
    return kAudioHardwareNoError;
}

} // namespace halvo::driver
