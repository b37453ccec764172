#pragma once

#include "base/Lifetime.h"
#include "loudness/GuardedDevices.h"
#include "loudness/LoudnessSession.h"
#include "loudness/SessionLevel.h"
#include "loudness/SettlingDevices.h"

#include <cstdint>

namespace halvo {

class WriteAccess;

/// Raises the active device to full scale once nothing plays straight into it, or has it stay at
/// its own level when that takes too long. Which one waits is `GuardedDevices::isRaiseWaiting`. The
/// caller holds the lock of `WriteAccess`. Main thread.
class PendingRaise {
  public:
    /// What is passed in must outlive the object.
    PendingRaise(AudioServer& server, WriteAccess& access, LoudnessSession& session,
                 GuardedDevices& devices, const SettlingDevices& settling, SessionLevel& level)
        : server_(server), access_(access), session_(session), devices_(devices),
          settling_(settling), level_(level) {}

    /// Raises the device if one waits and it is safe.
    void attempt();
    /// From here on the raise has that long before it is given up.
    void wait();
    /// Both, in this order.
    void retry();

  private:
    using State = GuardedDevice::State;

    bool isHeldBack(AudioDeviceID id);
    void giveUp();
    void perform(AudioDeviceID id, GuardedDevices::Entry& entry);
    void takeVolumeOfPort(GuardedDevice& device, const DeviceLevel& present);

    AudioServer& server_;
    WriteAccess& access_;
    LoudnessSession& session_;
    GuardedDevices& devices_;
    const SettlingDevices& settling_;
    SessionLevel& level_;
    std::uint64_t generation_ = 0;
    Lifetime lifetime_;
};

} // namespace halvo
