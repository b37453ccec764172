#pragma once

#include "platform/OutputUnit.h"

#include <atomic>
#include <functional>
#include <vector>

struct spa_source;

namespace halvo {

class PipeWireConnection;
class PipeWireRenderer;

/// When the server's graph goes to sleep, no cycle comes that would carry silence: what follows the
/// sound, such as a meter, would stay where it was. This plays one more second to nowhere, at the
/// pace of the sound. With the connection's lock.
class PipeWireSettling {
  public:
    /// `settled` is called on the connection's thread at the end of that second.
    PipeWireSettling(PipeWireConnection& connection, PipeWireRenderer& renderer,
                     const StreamFormat& format, std::function<void()> settled);
    /// Returns when the render thread has left it for good.
    ~PipeWireSettling();
    PipeWireSettling(const PipeWireSettling&) = delete;
    PipeWireSettling& operator=(const PipeWireSettling&) = delete;

    void begin();
    /// Cycles come again. To be called before they do.
    void end();

  private:
    void arm(bool on);
    void tick();

    PipeWireConnection& connection_;
    PipeWireRenderer& renderer_;
    const std::uint32_t frames_;
    const std::function<void()> settled_;
    spa_source* timer_;
    int ticksLeft_ = 0;
    // Render thread.
    std::atomic<bool> active_{false};
    std::vector<float> nowhere_;
};

} // namespace halvo
