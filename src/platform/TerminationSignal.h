#pragma once

#include <functional>

namespace halvo {

class AudioHardware;
class UserDefaults;

/// SIGTERM, the one signal that is handled.
class TerminationSignal {
  public:
    /// Gives the system its sound back. Gets its own view of the hardware and of the saved settings
    /// because it may run while the main thread is anywhere; touches nothing else.
    using Handler = void (*)(AudioHardware&, const UserDefaults&);

    virtual ~TerminationSignal() = default;

    /// From now on SIGTERM runs `handler` once and then ends the process by the signal. The main
    /// thread's listeners are silent before the handler starts. Main thread.
    virtual void install(Handler handler) = 0;
};

} // namespace halvo
