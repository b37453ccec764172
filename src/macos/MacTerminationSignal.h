#pragma once

#include "platform/TerminationSignal.h"

#include <dispatch/dispatch.h>

namespace halvo {

/// SIGTERM, handled on a dispatch queue; no code runs in signal context. Main thread.
class MacTerminationSignal final : public TerminationSignal {
  public:
    /// The main thread listens to `mainHardware`, which outlives this.
    explicit MacTerminationSignal(AudioHardware& mainHardware) : mainHardware_(mainHardware) {}
    /// Restores SIGTERM's default action.
    ~MacTerminationSignal() override;
    MacTerminationSignal(const MacTerminationSignal&) = delete;
    MacTerminationSignal& operator=(const MacTerminationSignal&) = delete;

    /// The process ends at most 450 ms after the handler started.
    void install(Handler handler) override;

  private:
    AudioHardware& mainHardware_;
    dispatch_source_t source_ = nullptr;
};

} // namespace halvo
