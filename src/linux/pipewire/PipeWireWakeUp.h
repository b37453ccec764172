#pragma once

#include "linux/pipewire/PipeWireHandles.h"

#include <memory>
#include <string>

namespace halvo {

class PipeWireConnection;

/// Plays silence into a sink for as long as it lives. A sink that has never run keeps a level that
/// is written to it, but tells nobody of the change; as soon as it runs it does. With the
/// connection's lock.
class PipeWireWakeUp {
  public:
    /// The link group of these streams; the session manager lets them reach the virtual device.
    static constexpr const char* kLinkGroup = "halvo-wake-up";

    /// Does nothing when the server is away or refuses.
    PipeWireWakeUp(PipeWireConnection& connection, const std::string& sinkName);
    ~PipeWireWakeUp();
    PipeWireWakeUp(const PipeWireWakeUp&) = delete;
    PipeWireWakeUp& operator=(const PipeWireWakeUp&) = delete;

  private:
    struct Deleter {
        void operator()(pw_stream* stream) const { pw_stream_destroy(stream); }
    };

    static const pw_stream_events& events();
    void process() noexcept;

    std::unique_ptr<pw_stream, Deleter> stream_;
    PipeWireHook hook_;
};

} // namespace halvo
