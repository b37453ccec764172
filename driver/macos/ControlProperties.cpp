#include "driver/macos/Property.h"
#include "driver/macos/VirtualDevice.h"
#include "driver/macos/VolumeScale.h"

namespace halvo::driver {

namespace {

constexpr std::uint32_t kMainElement = 0;

PropertyValue nothing(const PropertyQuestion&) {
    return PropertyValue::list<ObjectID>({});
}

PropertyValue scalar(const PropertyQuestion& question) {
    return PropertyValue::of(question.device.volume());
}
PropertyValue decibels(const PropertyQuestion& question) {
    return PropertyValue::of(VolumeScale::decibels(question.device.volume()));
}
PropertyValue decibelRange(const PropertyQuestion&) {
    return PropertyValue::of(RangeRecord{static_cast<double>(VolumeScale::kLowest),
                                         static_cast<double>(VolumeScale::kHighest)});
}

/// The value to convert stands where the result goes.
PropertyValue scalarToDecibels(const PropertyQuestion& question) {
    return PropertyValue::of(VolumeScale::decibels(recordOf<float>(question.input).value_or(0)));
}
PropertyValue decibelsToScalar(const PropertyQuestion& question) {
    const auto lowest = VolumeScale::kLowest;
    return PropertyValue::of(VolumeScale::scalar(recordOf<float>(question.input).value_or(lowest)));
}

std::expected<PropertyChange, PropertyError> setVolume(VirtualDevice& device, float volume) {
    const float before = device.volume();
    device.setVolume(volume);
    if (device.volume() == before) return PropertyChange{};
    return PropertyChange{{selector::kScalar, selector::kDecibels}};
}
std::expected<PropertyChange, PropertyError> setScalar(VirtualDevice& device,
                                                       std::span<const std::byte> bytes) {
    const auto value = recordOf<float>(bytes);
    if (!value) return std::unexpected(PropertyError::wrongSize);
    return setVolume(device, *value);
}
std::expected<PropertyChange, PropertyError> setDecibels(VirtualDevice& device,
                                                         std::span<const std::byte> bytes) {
    const auto value = recordOf<float>(bytes);
    if (!value) return std::unexpected(PropertyError::wrongSize);
    // There and back may differ in the last digit.
    if (*value == VolumeScale::decibels(device.volume())) return PropertyChange{};
    return setVolume(device, VolumeScale::scalar(*value));
}

PropertyValue isMuted(const PropertyQuestion& question) {
    return PropertyValue::of(std::uint32_t{question.device.isMuted() ? 1U : 0U});
}
std::expected<PropertyChange, PropertyError> setMuted(VirtualDevice& device,
                                                      std::span<const std::byte> bytes) {
    const auto value = recordOf<std::uint32_t>(bytes);
    if (!value) return std::unexpected(PropertyError::wrongSize);
    if ((*value != 0) == device.isMuted()) return PropertyChange{};
    device.setMuted(*value != 0);
    return PropertyChange{{selector::kSwitch}};
}

constexpr std::array kVolumeProperties{
    Property{selector::kBaseClass, constant<kind::kLevelControl>},
    Property{selector::kClass, constant<kind::kVolumeControl>},
    Property{selector::kOwner, constant<object::kDevice>},
    Property{selector::kOwnedObjects, nothing},
    Property{selector::kControlScope, constant<scope::kOutput>},
    Property{selector::kControlElement, constant<kMainElement>},
    Property{selector::kScalar, scalar, setScalar},
    Property{selector::kDecibels, decibels, setDecibels},
    Property{selector::kDecibelRange, decibelRange},
    Property{selector::kScalarToDecibels, scalarToDecibels},
    Property{selector::kDecibelsToScalar, decibelsToScalar},
};

constexpr std::array kMuteProperties{
    Property{selector::kBaseClass, constant<kind::kBooleanControl>},
    Property{selector::kClass, constant<kind::kMuteControl>},
    Property{selector::kOwner, constant<object::kDevice>},
    Property{selector::kOwnedObjects, nothing},
    Property{selector::kControlScope, constant<scope::kOutput>},
    Property{selector::kControlElement, constant<kMainElement>},
    Property{selector::kSwitch, isMuted, setMuted},
};

} // namespace

std::span<const Property> volumeProperties() {
    return kVolumeProperties;
}

std::span<const Property> muteProperties() {
    return kMuteProperties;
}

} // namespace halvo::driver
