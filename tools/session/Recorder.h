#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace halvo::session {

/// A stretch of recorded sound: stereo, interleaved, with the place of each block on the server's
/// clock.
struct Recording {
    struct Block {
        std::uint64_t position; ///< the graph's clock at the block's first frame, in frames
        std::size_t firstFrame; ///< where the block starts in `samples`, in frames
        std::size_t frames;
    };
    std::vector<float> samples;
    std::vector<Block> blocks;

    std::size_t frames() const { return samples.size() / 2; }
    /// Frames by which the clock advanced without delivering any (missed cycles).
    std::uint64_t lostFrames() const;
    /// The loudest absolute sample from `firstFrame` on.
    float peak(std::size_t firstFrame = 0) const;
};

/// Records what a sink plays (its monitor), without resampling or level changes, into memory, on a
/// thread of its own. It never follows the default output. Any thread.
class Recorder {
  public:
    /// Whether it keeps the sink from suspending while nothing plays.
    enum class Sink { staysAwake, maySleep };

    /// Connects to the server at `socket` and records the sink `nodeName`, at most `maxSeconds`.
    Recorder(const std::string& socket, const std::string& nodeName, std::uint32_t rate,
             double maxSeconds = 60.0, Sink sink = Sink::staysAwake);
    ~Recorder();

    /// Whether frames arrive; unless the sink may sleep, they do so even in silence.
    bool isRunning() const;
    /// Frames recorded so far.
    std::size_t frames() const;
    /// Everything so far.
    Recording recording() const;
    /// Forgets everything so far.
    void clear();

  private:
    struct Stream;
    std::unique_ptr<Stream> stream_;
};

} // namespace halvo::session
