#pragma once

#include "driver/macos/AudioObject.h"

#include <cstddef>
#include <cstring>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace halvo::driver {

class VirtualDevice;

enum class PropertyError { noObject, noProperty, wrongSize, notSettable, wrongFormat, wrongValue };

/// What a property holds: bytes as the host keeps them, or text, which the host takes as an object.
class PropertyValue {
  public:
    template <typename Record> static PropertyValue of(const Record& record) {
        return {std::as_bytes(std::span(&record, 1)), 0};
    }
    template <typename Element> static PropertyValue list(const std::vector<Element>& elements) {
        return {std::as_bytes(std::span(elements)), sizeof(Element)};
    }
    static PropertyValue text(std::string text) {
        PropertyValue value({}, 0);
        value.text_ = std::move(text);
        return value;
    }

    /// In bytes; that of a reference for text.
    std::size_t size() const { return text_ ? sizeof(void*) : bytes_.size(); }
    const std::optional<std::string>& text() const { return text_; }
    std::span<const std::byte> bytes() const { return bytes_; }

    /// Copies the bytes and returns their number: of a list as many whole elements as there is room
    /// for, else all or an error.
    std::expected<std::size_t, PropertyError> copyTo(std::span<std::byte> room) const;

  private:
    PropertyValue(std::span<const std::byte> bytes, std::size_t elementSize)
        : bytes_(bytes.begin(), bytes.end()), elementSize_(elementSize) {}

    std::vector<std::byte> bytes_;
    std::optional<std::string> text_;
    std::size_t elementSize_; ///< 0: no list
};

/// What is asked for, beside the property itself.
struct PropertyQuestion {
    const VirtualDevice& device;
    std::uint32_t scope = scope::kGlobal;
    std::string_view qualifier = {};       ///< text that the answer depends on
    std::span<const std::byte> input = {}; ///< what stands where the answer goes
};

/// What came of setting a property.
struct PropertyChange {
    std::vector<std::uint32_t> selectors = {}; ///< of the same object, for others to read again
    std::optional<std::uint32_t> rate = {};    ///< not set yet: the host stops I/O first
};

/// A line of an object's table.
struct Property {
    using Read = PropertyValue (*)(const PropertyQuestion&);
    using Write = std::expected<PropertyChange, PropertyError> (*)(VirtualDevice&,
                                                                   std::span<const std::byte>);
    std::uint32_t selector;
    Read read;
    Write write = nullptr;    ///< none: cannot be set
    bool hasInputSide = true; ///< whether it can be asked for on the input's side
};

/// The record that the bytes are; nothing when they are of another size.
template <typename Record> std::optional<Record> recordOf(std::span<const std::byte> bytes) {
    static_assert(std::is_trivially_copyable_v<Record>);
    Record record;
    if (bytes.size() != sizeof record) return std::nullopt;
    std::memcpy(&record, bytes.data(), sizeof record);
    return record;
}

/// A reader for what never changes.
template <std::uint32_t value> PropertyValue constant(const PropertyQuestion&) {
    return PropertyValue::of(value);
}

/// The tables of the five objects.
std::span<const Property> plugInProperties();
std::span<const Property> deviceProperties();
std::span<const Property> streamProperties();
std::span<const Property> volumeProperties();
std::span<const Property> muteProperties();

} // namespace halvo::driver
