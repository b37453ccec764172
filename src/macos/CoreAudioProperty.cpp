#include "macos/CoreAudioProperty.h"

#include "macos/CoreFoundation.h"

namespace halvo::CoreAudio {

bool has(AudioObjectID object, const Address& address) {
    return AudioObjectHasProperty(object, &address) != 0;
}

std::optional<UInt32> sizeOf(AudioObjectID object, const Address& address) {
    UInt32 size = 0;
    const auto status = AudioObjectGetPropertyDataSize(object, &address, 0, nullptr, &size);
    return status == kAudioHardwareNoError ? std::optional(size) : std::nullopt;
}

std::optional<UInt32> readBytes(AudioObjectID object, const Address& address, void* data,
                                UInt32 size, CFStringRef qualifier) {
    const UInt32 qualifierSize = qualifier != nullptr ? sizeof(qualifier) : 0;
    const auto status = AudioObjectGetPropertyData(
        object, &address, qualifierSize, qualifier != nullptr ? &qualifier : nullptr, &size, data);
    return status == kAudioHardwareNoError ? std::optional(size) : std::nullopt;
}

bool writeBytes(AudioObjectID object, const Address& address, const void* data, UInt32 size) {
    return AudioObjectSetPropertyData(object, &address, 0, nullptr, size, data) ==
           kAudioHardwareNoError;
}

std::optional<std::string> readText(AudioObjectID object, const Address& address) {
    const CFHandle<CFStringRef> text(read<CFStringRef>(object, address).value_or(nullptr));
    return textOf(text.get());
}

} // namespace halvo::CoreAudio
