#pragma once

#include "helpers/Announcer.h"

#include <dispatch/dispatch.h>
#include <functional>
#include <memory>
#include <string>

namespace halvo::helper {

/// The system's own record of what is playing, in a framework without headers. Functions that it
/// lacks on some version of the system make `load` fail. One queue for everything.
class MediaRemote {
  public:
    /// The system's numbers.
    enum class Command : int { play = 0, pause = 1, togglePlayPause = 2, next = 4, previous = 5 };
    /// What plays now. The cover is an address of the kind data:, "" without one.
    struct State {
        Track track;
        bool isPlaying = false;
        std::string artURL;
    };

    static std::unique_ptr<MediaRemote> load();
    ~MediaRemote();

    /// Calls `changed` on `queue` after every change, until the process ends.
    void observe(dispatch_queue_t queue, std::function<void()> changed);
    /// Asks, and calls `take` on `queue` with the answer; never if the system does not answer.
    void ask(dispatch_queue_t queue, std::function<void(const State&)> take);
    /// Whether the system has taken the command; waits for it at most two seconds.
    bool send(Command command);

  private:
    struct Functions;
    explicit MediaRemote(const Functions& functions);

    std::unique_ptr<const Functions> functions_;
};

} // namespace halvo::helper
