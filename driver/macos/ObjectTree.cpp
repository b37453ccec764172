#include "driver/macos/ObjectTree.h"

#include <algorithm>

namespace halvo::driver {

namespace {

std::expected<std::span<const Property>, PropertyError> tableOf(ObjectID id) {
    switch (id) {
    case object::kPlugIn:
        return plugInProperties();
    case object::kDevice:
        return deviceProperties();
    case object::kStream:
        return streamProperties();
    case object::kVolume:
        return volumeProperties();
    case object::kMute:
        return muteProperties();
    default:
        return std::unexpected(PropertyError::noObject);
    }
}

std::expected<const Property*, PropertyError> find(ObjectID id, const PropertyAddress& address) {
    const auto table = tableOf(id);
    if (!table) return std::unexpected(table.error());
    const auto found = std::ranges::find(*table, address.selector, &Property::selector);
    const bool isMain = address.element == 0;
    if (found == table->end() || !isMain) return std::unexpected(PropertyError::noProperty);
    const bool fits = address.scope == scope::kGlobal || address.scope == scope::kOutput ||
                      (address.scope == scope::kInput && found->hasInputSide);
    return fits ? std::expected<const Property*, PropertyError>(&*found)
                : std::unexpected(PropertyError::noProperty);
}

} // namespace

std::expected<std::size_t, PropertyError> PropertyValue::copyTo(std::span<std::byte> room) const {
    if (elementSize_ == 0 && room.size() < bytes_.size()) {
        return std::unexpected(PropertyError::wrongSize);
    }
    std::size_t size = std::min(room.size(), bytes_.size());
    if (elementSize_ > 0) size -= size % elementSize_;
    std::copy_n(bytes_.begin(), size, room.begin());
    return size;
}

bool ObjectTree::has(ObjectID id, const PropertyAddress& address) const {
    return find(id, address).has_value();
}

std::expected<bool, PropertyError> ObjectTree::isSettable(ObjectID id,
                                                          const PropertyAddress& address) const {
    const auto property = find(id, address);
    if (!property) return std::unexpected(property.error());
    return (*property)->write != nullptr;
}

std::expected<std::size_t, PropertyError> ObjectTree::size(ObjectID id,
                                                           const PropertyAddress& address) const {
    const auto value = read(id, address, {}, {});
    if (!value) return std::unexpected(value.error());
    return value->size();
}

std::expected<PropertyValue, PropertyError>
ObjectTree::read(ObjectID id, const PropertyAddress& address, std::string_view qualifier,
                 std::span<const std::byte> input) const {
    const auto property = find(id, address);
    if (!property) return std::unexpected(property.error());
    return (*property)->read({device_, address.scope, qualifier, input});
}

std::expected<PropertyChange, PropertyError>
ObjectTree::write(ObjectID id, const PropertyAddress& address,
                  std::span<const std::byte> bytes) const {
    const auto property = find(id, address);
    if (!property) return std::unexpected(property.error());
    const auto write = (*property)->write;
    if (write == nullptr) return std::unexpected(PropertyError::notSettable);
    return write(device_, bytes);
}

} // namespace halvo::driver
