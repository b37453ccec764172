#pragma once

#include "linux/pipewire/PipeWireCycleTrigger.h"
#include "linux/pipewire/PipeWireHandles.h"
#include "linux/pipewire/PipeWireSettling.h"
#include "platform/OutputUnit.h"

#include <atomic>
#include <memory>
#include <string>

struct spa_io_position;

namespace halvo {

class PipeWireConnection;
class PipeWireRenderer;

/// One playback stream to one sink, triggered by a `PipeWireCycleTrigger`. Create and destroy it
/// with the connection's lock; the destructor returns once the render thread no longer uses it.
class PipeWireStream : private PipeWireCycleTrigger::Owner {
  public:
    class Owner {
      public:
        virtual ~Owner() = default;
        /// The server removed the stream. Connection's thread; the stream must not be destroyed
        /// here.
        virtual void streamFailed() = 0;
        /// Sound flows, or the graph is idle because no client plays. Connection's thread.
        virtual void flowChanged(bool flows) = 0;
    };

    /// Null while disconnected or on failure. The renderer must be prepared.
    static std::unique_ptr<PipeWireStream> create(PipeWireConnection& connection, Owner& owner,
                                                  PipeWireRenderer& renderer,
                                                  const std::string& sinkName,
                                                  const StreamFormat& format);
    ~PipeWireStream() override;
    PipeWireStream(const PipeWireStream&) = delete;
    PipeWireStream& operator=(const PipeWireStream&) = delete;

  private:
    struct Deleter {
        void operator()(pw_stream* stream) const { pw_stream_destroy(stream); }
    };

    PipeWireStream(PipeWireConnection& connection, Owner& owner, PipeWireRenderer& renderer,
                   const StreamFormat& format);
    bool connect(const std::string& sinkName);

    static const pw_stream_events& events();
    void stateChanged(pw_stream_state state);
    void controlChanged(std::uint32_t id, const pw_stream_control& control);
    void process() noexcept;
    void cycleTriggered() noexcept override;
    void triggerFailed() override;

    PipeWireConnection& connection_;
    Owner& owner_;
    PipeWireRenderer& renderer_;
    const StreamFormat format_;
    bool connected_ = false;
    PipeWireSettling settling_;
    // Read by the render thread.
    std::atomic<bool> streaming_{false};
    std::atomic<const spa_io_position*> position_{nullptr};
    // Destroyed after the stream, whose sink would otherwise wait for a trigger that never comes.
    std::unique_ptr<PipeWireCycleTrigger> trigger_;
    std::unique_ptr<pw_stream, Deleter> stream_;
    PipeWireHook hook_;
};

} // namespace halvo
