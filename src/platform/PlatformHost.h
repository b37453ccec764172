#pragma once

#include "platform/Platform.h"

namespace halvo {

/// The system that the program runs on: owns the services of the bundle and the main loop. Main
/// thread only.
class PlatformHost {
  public:
    virtual ~PlatformHost() = default;
    virtual Platform platform() = 0;
    /// Runs the main loop until the program is asked to quit; returns the exit status.
    virtual int run() = 0;
};

/// Why the program cannot run.
enum class PlatformRefusal {
    alreadyRunning, ///< another instance runs and was asked to open its panel
    noSoundSystem,  ///< the sound system's own library cannot be used
};

} // namespace halvo
