#include "driver/macos/Property.h"
#include "driver/macos/VirtualDevice.h"
#include "platform/VirtualOutput.h"

namespace halvo::driver {

namespace {

PropertyValue manufacturer(const PropertyQuestion&) {
    return PropertyValue::text("Halvo");
}

PropertyValue devices(const PropertyQuestion&) {
    return PropertyValue::list<ObjectID>({object::kDevice});
}

PropertyValue noBoxes(const PropertyQuestion&) {
    return PropertyValue::list<ObjectID>({});
}

PropertyValue deviceForUID(const PropertyQuestion& question) {
    const bool isOurs = question.qualifier == kVirtualDeviceUID;
    return PropertyValue::of(isOurs ? object::kDevice : object::kUnknown);
}

/// Empty: the plug-in's own bundle.
PropertyValue resourceBundle(const PropertyQuestion&) {
    return PropertyValue::text("");
}

constexpr std::array kProperties{
    Property{selector::kBaseClass, constant<kind::kObject>},
    Property{selector::kClass, constant<kind::kPlugIn>},
    Property{selector::kOwner, constant<object::kUnknown>},
    Property{selector::kManufacturer, manufacturer},
    Property{selector::kOwnedObjects, devices},
    Property{selector::kDeviceList, devices},
    Property{selector::kTranslateUIDToDevice, deviceForUID},
    Property{selector::kBoxList, noBoxes},
    Property{selector::kTranslateUIDToBox, constant<object::kUnknown>},
    Property{selector::kResourceBundle, resourceBundle},
};

} // namespace

std::span<const Property> plugInProperties() {
    return kProperties;
}

} // namespace halvo::driver
