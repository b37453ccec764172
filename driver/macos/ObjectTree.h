#pragma once

#include "driver/macos/Property.h"

namespace halvo::driver {

/// The plug-in's objects as the host asks for them. Any thread but the audio thread.
class ObjectTree {
  public:
    explicit ObjectTree(VirtualDevice& device) : device_(device) {}

    bool has(ObjectID id, const PropertyAddress& address) const;
    std::expected<bool, PropertyError> isSettable(ObjectID id,
                                                  const PropertyAddress& address) const;
    /// In bytes.
    std::expected<std::size_t, PropertyError> size(ObjectID id,
                                                   const PropertyAddress& address) const;
    std::expected<PropertyValue, PropertyError> read(ObjectID id, const PropertyAddress& address,
                                                     std::string_view qualifier,
                                                     std::span<const std::byte> input) const;
    std::expected<PropertyChange, PropertyError> write(ObjectID id, const PropertyAddress& address,
                                                       std::span<const std::byte> bytes) const;

  private:
    VirtualDevice& device_;
};

} // namespace halvo::driver
