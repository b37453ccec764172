#pragma once

#include "posix/PosixSharedMemory.h"

namespace halvo {

/// Shared memory as macOS has it: nobody tells when an object comes or goes, so that watching is
/// looking. Main thread only.
class MacSharedMemory final : public PosixSharedMemory {
  public:
    /// Looks about once a second, with a timer that may wait for other work to wake the machine.
    Subscription watch(const char* name, std::function<void()> changed) override;

  protected:
    /// The name itself, though another user made the object: the audio server's own.
    std::string systemName(const std::string& name) const override;
};

} // namespace halvo
