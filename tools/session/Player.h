#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace halvo::session {

/// Plays given stereo samples once, bit for bit, as an ordinary music program would: into the
/// default output, following it wherever it moves. On a thread of its own. Any thread.
class Player {
  public:
    /// Connects to the server at `socket` and plays interleaved stereo `samples` of `rate` at once;
    /// `target` is a node's name, empty: the default output.
    Player(const std::string& socket, std::vector<float> samples, std::uint32_t rate,
           const std::string& target = "");
    ~Player();

    /// Whether the first frame has been handed to the server.
    bool hasStarted() const;
    /// Whether the last frame has been handed to the server.
    bool isFinished() const;
    /// Frames handed to the server so far.
    std::size_t framesPlayed() const;

  private:
    struct Stream;
    std::unique_ptr<Stream> stream_;
};

} // namespace halvo::session
