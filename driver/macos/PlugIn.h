#pragma once

#include "driver/macos/ObjectTree.h"
#include "driver/macos/VirtualDevice.h"

#include <CoreAudio/AudioServerPlugIn.h>

namespace halvo::driver {

/// The device as the host's interface has it: statuses for errors, string objects for text.
/// Functions are called as the interface's of the same names; the I/O ones on the audio thread.
class PlugIn {
  public:
    PlugIn();

    OSStatus initialize(AudioServerPlugInHostRef host);
    OSStatus performConfigurationChange(AudioObjectID device, UInt64 action);

    bool hasProperty(AudioObjectID id, const AudioObjectPropertyAddress& address) const;
    OSStatus isSettable(AudioObjectID id, const AudioObjectPropertyAddress& address,
                        Boolean& settable) const;
    OSStatus dataSize(AudioObjectID id, const AudioObjectPropertyAddress& address,
                      UInt32& size) const;
    /// `data` is the room for the answer, and for some properties the question.
    OSStatus data(AudioObjectID id, const AudioObjectPropertyAddress& address,
                  std::span<const std::byte> qualifier, std::span<std::byte> data,
                  UInt32& size) const;
    OSStatus setData(AudioObjectID id, const AudioObjectPropertyAddress& address,
                     std::span<const std::byte> data);

    OSStatus startIO(AudioObjectID device);
    OSStatus stopIO(AudioObjectID device);
    OSStatus zeroTimeStamp(AudioObjectID device, Float64& sampleTime, UInt64& hostTime,
                           UInt64& seed) const noexcept HALVO_REALTIME;
    OSStatus doOperation(AudioObjectID stream, UInt32 operation, UInt32 frames,
                         const void* buffer) noexcept HALVO_REALTIME;

  private:
    void announce(ObjectID id, const PropertyChange& change);

    VirtualDevice device_;
    ObjectTree objects_{device_};
    AudioServerPlugInHostRef host_ = nullptr;
};

} // namespace halvo::driver
