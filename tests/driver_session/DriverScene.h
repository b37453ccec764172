#pragma once

#include "driver_session/RingFollower.h"
#include "platform/VirtualOutput.h"
#include "session/PrivateSession.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace halvo::test {

inline constexpr const char* kVirtualSink = kVirtualDeviceUID;

/// A private session with the real driver in it.
class DriverScene {
  public:
    explicit DriverScene(session::Options options = {});

    /// Starts a driver and keeps it as the scene's own.
    void startDriver();
    /// Puts the bundle's drop-in among the server's configuration, for its next start.
    void installDropIn();
    /// The session's processes of that name (as the kernel keeps it).
    std::vector<int> processes(const std::string& name) const;
    /// Waits for sink, capture stream and ring.
    bool isUp();
    std::size_t virtualSinks() const;
    /// Collects frames from the ring until the condition holds.
    bool gatherUntil(const std::function<bool()>& condition);
    /// Whether frames of a `countingSamples` player have arrived in the ring since the last clear.
    bool soundArrives();

    session::PrivateSession& session() { return *session_; }
    session::SpawnedProgram& driver() { return *driver_; }
    RingFollower& ring() { return *ring_; }

  private:
    std::size_t nodes(const char* name) const;

    std::unique_ptr<session::PrivateSession> session_;
    std::unique_ptr<session::SpawnedProgram> driver_;
    std::unique_ptr<RingFollower> ring_;
};

/// Stereo frames that encode their own number, so that lost, repeated, scaled or mixed frames are
/// detected: frame f is (f + 1) / 2^24 on the left and its negative on the right.
std::vector<float> countingSamples(std::size_t frames);

/// The counting samples that arrived.
struct CountingResult {
    std::size_t frames = 0; ///< that are not silence
    std::size_t skewed = 0; ///< of these: the very first, one channel up to a cycle behind
    std::size_t wrong = 0; ///< of these: neither skewed, the next frame nor a later stretch's start
    std::size_t jumps = 0; ///< places where frames are missing
    std::size_t first = 0; ///< number of the first frame seen
    std::size_t last = 0;  ///< number of the last frame seen
};
CountingResult examineCounting(const std::vector<float>& samples);

} // namespace halvo::test
