#include "driver/macos/DeviceFormat.h"
#include "driver/macos/Property.h"
#include "driver/macos/VirtualDevice.h"

namespace halvo::driver {

namespace {

constexpr std::uint32_t kOutputDirection = 0;
constexpr std::uint32_t kFirstChannel = 1;

PropertyValue nothing(const PropertyQuestion&) {
    return PropertyValue::list<ObjectID>({});
}

PropertyValue isActive(const PropertyQuestion& question) {
    return PropertyValue::of(std::uint32_t{question.device.isStreamActive() ? 1U : 0U});
}
std::expected<PropertyChange, PropertyError> setActive(VirtualDevice& device,
                                                       std::span<const std::byte> bytes) {
    const auto value = recordOf<std::uint32_t>(bytes);
    if (!value) return std::unexpected(PropertyError::wrongSize);
    if ((*value != 0) == device.isStreamActive()) return PropertyChange{};
    device.setStreamActive(*value != 0);
    return PropertyChange{{selector::kIsActive}};
}

PropertyValue format(const PropertyQuestion& question) {
    return PropertyValue::of(formatAt(question.device.rate()));
}
PropertyValue formats(const PropertyQuestion&) {
    std::vector<RangedFormatRecord> records;
    for (const std::uint32_t rate : VirtualDevice::kRates)
        records.push_back({formatAt(rate), rangeOf(rate)});
    return PropertyValue::list(records);
}
std::expected<PropertyChange, PropertyError> setFormat(VirtualDevice& device,
                                                       std::span<const std::byte> bytes) {
    const auto value = recordOf<StreamFormatRecord>(bytes);
    if (!value) return std::unexpected(PropertyError::wrongSize);
    const auto rate = supportedRate(value->sampleRate);
    if (!rate || *value != formatAt(*rate)) return std::unexpected(PropertyError::wrongFormat);
    return PropertyChange{{}, *rate == device.rate() ? std::nullopt : rate};
}

constexpr std::array kProperties{
    Property{selector::kBaseClass, constant<kind::kObject>},
    Property{selector::kClass, constant<kind::kStream>},
    Property{selector::kOwner, constant<object::kDevice>},
    Property{selector::kOwnedObjects, nothing},
    Property{selector::kIsActive, isActive, setActive},
    Property{selector::kDirection, constant<kOutputDirection>},
    Property{selector::kTerminalType, constant<kind::kSpeaker>},
    Property{selector::kStartingChannel, constant<kFirstChannel>},
    Property{selector::kLatency, constant<0>},
    Property{selector::kVirtualFormat, format, setFormat},
    Property{selector::kVirtualFormats, formats},
    Property{selector::kPhysicalFormat, format, setFormat},
    Property{selector::kPhysicalFormats, formats},
};

} // namespace

std::span<const Property> streamProperties() {
    return kProperties;
}

} // namespace halvo::driver
