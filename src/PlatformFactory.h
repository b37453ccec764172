#pragma once

#include "platform/Platform.h"

#include <expected>
#include <memory>
#include <string>

namespace halvo {

/// The machine that the program runs on: owns every service of the bundle and the main loop.
/// Main thread only.
class PlatformHost {
  public:
    virtual ~PlatformHost() = default;
    virtual Platform platform() = 0;
    /// Runs the main loop until somebody asks the program to end; returns the exit status.
    virtual int run() = 0;
};

enum class PlatformRefusal {
    alreadyRunning, ///< another instance runs and was asked to show itself
    noSoundSystem,  ///< the sound system's own library cannot be used
};

/// Settles what must be settled before the process has a second thread. The first call in `main`.
void preparePlatform();

/// The toolkit's back ends for windows, to be tried in turn and separated by semicolons; empty
/// where there is no screen.
std::string toolkitScreens();

/// Makes the session's instance end in the normal way, and waits for that. False when it does not
/// end; true, too, where none runs. Needs the application object.
bool quitRunningInstance();

/// The services of the system that this is built for. Needs the application object.
std::expected<std::unique_ptr<PlatformHost>, PlatformRefusal> makePlatform();

} // namespace halvo
