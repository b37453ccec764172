#pragma once

#include "platform/Platform.h"

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

/// Why a system cannot host the program.
enum class PlatformRefusal {
    alreadyRunning, ///< another instance runs and was asked to show itself
    noSoundSystem,  ///< the sound system's own library cannot be used
};

} // namespace halvo
