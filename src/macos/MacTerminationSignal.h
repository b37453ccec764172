#pragma once

#include "platform/TerminationSignal.h"

#include <dispatch/dispatch.h>

#include <functional>
#include <memory>

namespace halvo {

/// SIGTERM, handled on a dispatch queue; no code runs in signal context. Main thread.
class MacTerminationSignal final : public TerminationSignal {
  public:
    /// Makes what the handler uses when the signal arrives. Called once, on another thread.
    using MakeHardware = std::function<std::unique_ptr<AudioHardware>()>;

    /// The main thread listens to `mainHardware`, which outlives this. `handled` is called when the
    /// handler has returned, on its thread.
    MacTerminationSignal(AudioHardware& mainHardware, MakeHardware makeHardware,
                         std::function<void()> handled);
    /// Restores SIGTERM's default action.
    ~MacTerminationSignal() override;
    MacTerminationSignal(const MacTerminationSignal&) = delete;
    MacTerminationSignal& operator=(const MacTerminationSignal&) = delete;

    /// The process ends at most 450 ms after the handler started.
    void install(Handler handler) override;

  private:
    struct Steps {
        AudioHardware& mainHardware;
        MakeHardware makeHardware;
        std::function<void()> handled;
    };

    static void takeSignal(const std::shared_ptr<const Steps>& steps, Handler handler);

    std::shared_ptr<const Steps> steps_; ///< shared with a handler under way
    dispatch_source_t source_ = nullptr;
};

} // namespace halvo
