#include "driver/macos/DeviceFormat.h"
#include "driver/macos/Property.h"
#include "driver/macos/VirtualDevice.h"
#include "platform/VirtualOutput.h"

namespace halvo::driver {

namespace {

constexpr std::uint32_t kLeft = 1;
constexpr std::uint32_t kRight = 2;
constexpr std::uint32_t kUseChannelDescriptions = 0;

PropertyValue name(const PropertyQuestion&) {
    return PropertyValue::text(kVirtualDeviceName);
}
PropertyValue manufacturer(const PropertyQuestion&) {
    return PropertyValue::text("Halvo");
}
PropertyValue deviceUID(const PropertyQuestion&) {
    return PropertyValue::text(kVirtualDeviceUID);
}
PropertyValue modelUID(const PropertyQuestion&) {
    return PropertyValue::text("HalvoVirtualOutput_Model");
}

/// An output has nothing on the input's side.
PropertyValue onOutputSide(const PropertyQuestion& question, const std::vector<ObjectID>& objects) {
    return PropertyValue::list(question.scope == scope::kInput ? std::vector<ObjectID>() : objects);
}
PropertyValue ownedObjects(const PropertyQuestion& question) {
    return onOutputSide(question, {object::kStream, object::kVolume, object::kMute});
}
PropertyValue streams(const PropertyQuestion& question) {
    return onOutputSide(question, {object::kStream});
}
PropertyValue controls(const PropertyQuestion& question) {
    return onOutputSide(question, {object::kVolume, object::kMute});
}
PropertyValue canBeDefault(const PropertyQuestion& question) {
    return PropertyValue::of(std::uint32_t{question.scope == scope::kInput ? 0U : 1U});
}

PropertyValue relatedDevices(const PropertyQuestion&) {
    return PropertyValue::list<ObjectID>({object::kDevice});
}
PropertyValue isRunning(const PropertyQuestion& question) {
    return PropertyValue::of(std::uint32_t{question.device.isRunning() ? 1U : 0U});
}

PropertyValue nominalRate(const PropertyQuestion& question) {
    return PropertyValue::of(static_cast<double>(question.device.rate()));
}
PropertyValue availableRates(const PropertyQuestion&) {
    std::vector<RangeRecord> ranges;
    for (const std::uint32_t rate : VirtualDevice::kRates)
        ranges.push_back(rangeOf(rate));
    return PropertyValue::list(ranges);
}
std::expected<PropertyChange, PropertyError> setNominalRate(VirtualDevice& device,
                                                            std::span<const std::byte> bytes) {
    const auto value = recordOf<double>(bytes);
    if (!value) return std::unexpected(PropertyError::wrongSize);
    const auto rate = supportedRate(*value);
    if (!rate) return std::unexpected(PropertyError::wrongValue);
    return PropertyChange{{}, *rate == device.rate() ? std::nullopt : rate};
}

PropertyValue stereoChannels(const PropertyQuestion&) {
    return PropertyValue::of(std::array{kLeft, kRight});
}
PropertyValue channelLayout(const PropertyQuestion&) {
    return PropertyValue::of(StereoLayoutRecord{
        .tag = kUseChannelDescriptions,
        .bitmap = 0,
        .count = 2,
        .channels = {{{kLeft, 0, {}}, {kRight, 0, {}}}},
    });
}

constexpr std::array kProperties{
    Property{selector::kBaseClass, constant<kind::kObject>},
    Property{selector::kClass, constant<kind::kDevice>},
    Property{selector::kOwner, constant<object::kPlugIn>},
    Property{selector::kName, name},
    Property{selector::kManufacturer, manufacturer},
    Property{selector::kOwnedObjects, ownedObjects},
    Property{selector::kDeviceUID, deviceUID},
    Property{selector::kModelUID, modelUID},
    Property{selector::kTransportType, constant<kind::kVirtualTransport>},
    Property{selector::kRelatedDevices, relatedDevices},
    Property{selector::kClockDomain, constant<0>},
    Property{selector::kIsAlive, constant<1>},
    Property{selector::kIsRunning, isRunning},
    Property{selector::kCanBeDefault, canBeDefault},
    Property{selector::kCanBeSystemDefault, canBeDefault},
    Property{selector::kLatency, constant<0>},
    Property{selector::kStreams, streams},
    Property{selector::kControlList, controls},
    Property{selector::kSafetyOffset, constant<0>},
    Property{selector::kNominalRate, nominalRate, setNominalRate},
    Property{selector::kAvailableRates, availableRates},
    Property{selector::kIsHidden, constant<0>},
    Property{selector::kStereoChannels, stereoChannels, nullptr, false},
    Property{selector::kChannelLayout, channelLayout, nullptr, false},
    Property{selector::kZeroTimeStampPeriod, constant<FrameClock::kPeriod>},
    Property{selector::kClockAlgorithm, constant<kind::kRawClock>},
    Property{selector::kClockIsStable, constant<1>},
};

} // namespace

std::span<const Property> deviceProperties() {
    return kProperties;
}

} // namespace halvo::driver
