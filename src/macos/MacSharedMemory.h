#pragma once

#include "posix/PosixSharedMemory.h"

namespace halvo {

/// Shared memory on macOS, which does not notify when an object appears or disappears: watching is
/// polling. Main thread only.
class MacSharedMemory final : public PosixSharedMemory {
  public:
    /// Polls about once a second, with a coalesced timer.
    Subscription watch(const char* name, std::function<void()> changed) override;

  protected:
    /// The plain name, although another user, the audio server's, owns the object.
    std::string systemName(const std::string& name) const override;
};

} // namespace halvo
