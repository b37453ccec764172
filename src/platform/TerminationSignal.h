#pragma once

#include <functional>

namespace halvo {

class AudioHardware;
class UserDefaults;

/// SIGTERM, the only signal that is handled.
class TerminationSignal {
  public:
    /// Restores the system's sound. Gets its own access to the hardware and the saved settings,
    /// because the main thread may be anywhere; uses nothing else.
    using Handler = void (*)(AudioHardware&, const UserDefaults&);

    virtual ~TerminationSignal() = default;

    /// From now on SIGTERM runs `handler` once and then ends the process by the signal. The main
    /// thread's listeners are silenced before the handler starts. Main thread.
    virtual void install(Handler handler) = 0;
};

} // namespace halvo
