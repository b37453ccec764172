#pragma once

#include "platform/OutputUnit.h"

#include <atomic>
#include <functional>
#include <vector>

struct spa_source;

namespace halvo {

class PipeWireConnection;
class PipeWireRenderer;

/// When the server's graph goes to sleep, no cycle delivers silence, and meters would keep their
/// last value. This renders one more second to nowhere, in real time. With the connection's lock.
class PipeWireSettling {
  public:
    /// `settled` is called on the connection's thread at the end of that second.
    PipeWireSettling(PipeWireConnection& connection, PipeWireRenderer& renderer,
                     const StreamFormat& format, std::function<void()> settled);
    /// Returns once the render thread no longer uses it.
    ~PipeWireSettling();
    PipeWireSettling(const PipeWireSettling&) = delete;
    PipeWireSettling& operator=(const PipeWireSettling&) = delete;

    void begin();
    /// Call before cycles resume.
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
