#pragma once

#include "platform/TerminationSignal.h"

#include <dispatch/dispatch.h>

namespace halvo {

/// SIGTERM, taken by a queue of the system's; nothing runs in signal context. Main thread.
class MacTerminationSignal final : public TerminationSignal {
  public:
    /// `mainHardware` is what the main thread listens to, and outlives this.
    explicit MacTerminationSignal(AudioHardware& mainHardware) : mainHardware_(mainHardware) {}
    /// From here on SIGTERM ends the process at once again.
    ~MacTerminationSignal() override;
    MacTerminationSignal(const MacTerminationSignal&) = delete;
    MacTerminationSignal& operator=(const MacTerminationSignal&) = delete;

    /// The process ends at the latest 450 ms after the handler started, whatever it does.
    void install(Handler handler) override;

  private:
    AudioHardware& mainHardware_;
    dispatch_source_t source_ = nullptr;
};

} // namespace halvo
