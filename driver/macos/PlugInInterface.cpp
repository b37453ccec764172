#include "driver/macos/PlugIn.h"

#include <exception>

namespace {

using halvo::driver::PlugIn;
using Driver = AudioServerPlugInDriverRef;
using Address = AudioObjectPropertyAddress;
using ClientInfo = AudioServerPlugInClientInfo;
using CycleInfo = AudioServerPlugInIOCycleInfo;

/// What the host's reference points at; the table's address comes first.
struct Instance {
    AudioServerPlugInDriverInterface* table;
    PlugIn* plugIn;
};

PlugIn& plugInOf(Driver driver) {
    return *reinterpret_cast<Instance*>(driver)->plugIn;
}

/// Nothing is thrown into the host.
template <typename Call> OSStatus guarded(Call call) noexcept {
    try {
        return call();
    } catch (const std::exception&) {
        return kAudioHardwareUnspecifiedError;
    }
}

HRESULT queryInterface(void* driver, REFIID wanted, LPVOID* interface) {
    if (interface == nullptr) return kAudioHardwareIllegalOperationError;
    CFUUIDRef uuid = CFUUIDCreateFromUUIDBytes(nullptr, wanted);
    if (uuid == nullptr) return kAudioHardwareUnspecifiedError;
    const bool isKnown = CFEqual(uuid, IUnknownUUID) != 0 ||
                         CFEqual(uuid, kAudioServerPlugInDriverInterfaceUUID) != 0;
    CFRelease(uuid);
    *interface = isKnown ? driver : nullptr;
    return isKnown ? HRESULT{0} : E_NOINTERFACE;
}

/// One instance for as long as the host runs.
ULONG reference(void*) {
    return 1;
}

OSStatus initialize(Driver driver, AudioServerPlugInHostRef host) {
    return guarded([&] { return plugInOf(driver).initialize(host); });
}

OSStatus createDevice(Driver, CFDictionaryRef, const ClientInfo*, AudioObjectID*) {
    return kAudioHardwareUnsupportedOperationError;
}

OSStatus destroyDevice(Driver, AudioObjectID) {
    return kAudioHardwareUnsupportedOperationError;
}

/// All clients are heard alike: nothing is kept about them.
OSStatus clientChanged(Driver, AudioObjectID device, const ClientInfo*) {
    return device == halvo::driver::object::kDevice ? kAudioHardwareNoError
                                                    : kAudioHardwareBadObjectError;
}

OSStatus performChange(Driver driver, AudioObjectID device, UInt64 action, void*) {
    return guarded([&] { return plugInOf(driver).performConfigurationChange(device, action); });
}

OSStatus abortChange(Driver, AudioObjectID, UInt64, void*) {
    return kAudioHardwareNoError;
}

Boolean hasProperty(Driver driver, AudioObjectID id, pid_t, const Address* address) {
    return plugInOf(driver).hasProperty(id, *address) ? 1 : 0;
}

OSStatus isSettable(Driver driver, AudioObjectID id, pid_t, const Address* address,
                    Boolean* settable) {
    return plugInOf(driver).isSettable(id, *address, *settable);
}

OSStatus dataSize(Driver driver, AudioObjectID id, pid_t, const Address* address, UInt32,
                  const void*, UInt32* size) {
    return guarded([&] { return plugInOf(driver).dataSize(id, *address, *size); });
}

OSStatus data(Driver driver, AudioObjectID id, pid_t, const Address* address, UInt32 qualifierSize,
              const void* qualifier, UInt32 room, UInt32* size, void* data) {
    const std::span given(static_cast<const std::byte*>(qualifier),
                          qualifier != nullptr ? qualifierSize : 0);
    const std::span answer(static_cast<std::byte*>(data), room);
    return guarded([&] { return plugInOf(driver).data(id, *address, given, answer, *size); });
}

OSStatus setData(Driver driver, AudioObjectID id, pid_t, const Address* address, UInt32,
                 const void*, UInt32 size, const void* data) {
    const std::span given(static_cast<const std::byte*>(data), size);
    return guarded([&] { return plugInOf(driver).setData(id, *address, given); });
}

OSStatus startIO(Driver driver, AudioObjectID device, UInt32) {
    return guarded([&] { return plugInOf(driver).startIO(device); });
}

OSStatus stopIO(Driver driver, AudioObjectID device, UInt32) {
    return guarded([&] { return plugInOf(driver).stopIO(device); });
}

OSStatus zeroTimeStamp(Driver driver, AudioObjectID device, UInt32, Float64* sampleTime,
                       UInt64* hostTime, UInt64* seed) {
    return plugInOf(driver).zeroTimeStamp(device, *sampleTime, *hostTime, *seed);
}

OSStatus willDoOperation(Driver, AudioObjectID, UInt32, UInt32 operation, Boolean* willDo,
                         Boolean* inPlace) {
    *willDo = operation == kAudioServerPlugInIOOperationWriteMix ? 1 : 0;
    *inPlace = 1;
    return kAudioHardwareNoError;
}

OSStatus boundOfOperation(Driver, AudioObjectID, UInt32, UInt32, UInt32, const CycleInfo*) {
    return kAudioHardwareNoError;
}

OSStatus doOperation(Driver driver, AudioObjectID, AudioObjectID stream, UInt32, UInt32 operation,
                     UInt32 frames, const CycleInfo*, void* buffer, void*) {
    return plugInOf(driver).doOperation(stream, operation, frames, buffer);
}

AudioServerPlugInDriverInterface table{
    ._reserved = nullptr,
    .QueryInterface = queryInterface,
    .AddRef = reference,
    .Release = reference,
    .Initialize = initialize,
    .CreateDevice = createDevice,
    .DestroyDevice = destroyDevice,
    .AddDeviceClient = clientChanged,
    .RemoveDeviceClient = clientChanged,
    .PerformDeviceConfigurationChange = performChange,
    .AbortDeviceConfigurationChange = abortChange,
    .HasProperty = hasProperty,
    .IsPropertySettable = isSettable,
    .GetPropertyDataSize = dataSize,
    .GetPropertyData = data,
    .SetPropertyData = setData,
    .StartIO = startIO,
    .StopIO = stopIO,
    .GetZeroTimeStamp = zeroTimeStamp,
    .WillDoIOOperation = willDoOperation,
    .BeginIOOperation = boundOfOperation,
    .DoIOOperation = doOperation,
    .EndIOOperation = boundOfOperation,
};

} // namespace

/// The factory that the bundle's property list names; nothing for another type of plug-in.
extern "C" __attribute__((visibility("default"))) void* HalvoAudioDeviceCreate(CFAllocatorRef,
                                                                               CFUUIDRef type) {
    if (CFEqual(type, kAudioServerPlugInTypeUUID) == 0) return nullptr;
    try {
        // Never destroyed: the host may call until its process ends.
        static Instance instance{&table, new PlugIn};
        return &instance;
    } catch (const std::exception&) {
        return nullptr;
    }
}
