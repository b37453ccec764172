#pragma once

#include <CoreAudio/CoreAudio.h>

#include <optional>
#include <string>
#include <vector>

/// Core Audio's properties: every call into the server is one of these. Any thread.
namespace halvo::CoreAudio {

using Address = AudioObjectPropertyAddress;

constexpr Address globalAddress(AudioObjectPropertySelector selector) {
    return {selector, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMain};
}

constexpr Address outputAddress(AudioObjectPropertySelector selector,
                                AudioObjectPropertyElement element = 0) {
    return {selector, kAudioObjectPropertyScopeOutput, element};
}

bool has(AudioObjectID object, const Address& address);
/// The size of the value in bytes; nothing when the server refuses.
std::optional<UInt32> sizeOf(AudioObjectID object, const Address& address);

/// Reads at most `size` bytes; the number that was read, or nothing when the server refuses.
/// `qualifier` is what some properties ask by.
std::optional<UInt32> readBytes(AudioObjectID object, const Address& address, void* data,
                                UInt32 size, CFStringRef qualifier = nullptr);
bool writeBytes(AudioObjectID object, const Address& address, const void* data, UInt32 size);

/// The text of a property; nothing when the server refuses or has none.
std::optional<std::string> readText(AudioObjectID object, const Address& address);

/// A single value. Where the property converts, `value` is what it converts.
template <typename Value>
std::optional<Value> read(AudioObjectID object, const Address& address, Value value = {}) {
    const auto taken = readBytes(object, address, &value, sizeof(Value));
    return taken == sizeof(Value) ? std::optional(value) : std::nullopt;
}

template <typename Value>
std::optional<std::vector<Value>> readList(AudioObjectID object, const Address& address) {
    const auto size = sizeOf(object, address);
    if (!size) return std::nullopt;
    std::vector<Value> values(*size / sizeof(Value));
    const auto taken = readBytes(object, address, values.data(),
                                 static_cast<UInt32>(values.size() * sizeof(Value)));
    if (!taken) return std::nullopt;
    values.resize(*taken / sizeof(Value)); // may be fewer than at the first call
    return values;
}

template <typename Value>
bool write(AudioObjectID object, const Address& address, const Value& value) {
    return writeBytes(object, address, &value, sizeof(Value));
}

} // namespace halvo::CoreAudio
