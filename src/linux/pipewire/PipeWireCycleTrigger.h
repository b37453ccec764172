#pragma once

#include "linux/pipewire/PipeWireHandles.h"

#include <atomic>
#include <memory>
#include <pipewire/filter.h>

namespace halvo {

class PipeWireConnection;

/// A node without sound. In each cycle of the graph it runs after the node that is linked to its
/// port, or at the start of the cycle without a link. The virtual device's driver makes the link.
/// With the connection's lock.
class PipeWireCycleTrigger {
  public:
    class Owner {
      public:
        virtual ~Owner() = default;
        /// Once per cycle. Render thread.
        virtual void cycleTriggered() noexcept = 0;
        /// The server removed the node. Connection's thread; it must not be destroyed here.
        virtual void triggerFailed() = 0;
    };

    /// Null while disconnected or on failure.
    static std::unique_ptr<PipeWireCycleTrigger> create(PipeWireConnection& connection,
                                                        Owner& owner);
    ~PipeWireCycleTrigger();
    PipeWireCycleTrigger(const PipeWireCycleTrigger&) = delete;
    PipeWireCycleTrigger& operator=(const PipeWireCycleTrigger&) = delete;

    /// Once this returns, the owner is not called any more.
    void end();

  private:
    struct Deleter {
        void operator()(pw_filter* filter) const { pw_filter_destroy(filter); }
    };

    PipeWireCycleTrigger(PipeWireConnection& connection, Owner& owner)
        : connection_(connection), owner_(&owner) {}
    bool connect(pw_core& core);
    static const pw_filter_events& events();
    void stateChanged(pw_filter_state state);
    void process() noexcept;

    PipeWireConnection& connection_;
    std::atomic<Owner*> owner_; ///< null once ended; the render thread clears it
    void* port_ = nullptr;
    bool connected_ = false;
    std::unique_ptr<pw_filter, Deleter> filter_;
    PipeWireHook hook_;
};

} // namespace halvo
