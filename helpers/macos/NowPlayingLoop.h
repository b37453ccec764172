#pragma once

#include "helpers/Announcer.h"
#include "helpers/macos/MediaRemote.h"

#include <dispatch/dispatch.h>

namespace halvo::helper {

/// Writes a line to standard output for every change of what plays, until nobody reads any more or
/// the parent ends. Everything happens on one queue; a reader that is slow holds it up, and what
/// changes meanwhile is one line afterwards.
class NowPlayingLoop {
  public:
    explicit NowPlayingLoop(MediaRemote& remote);

    /// Ends with the process.
    [[noreturn]] void run();

  private:
    void watchParent();
    void lookSoon();
    void goOn();

    MediaRemote& remote_;
    dispatch_queue_t queue_;
    dispatch_source_t parent_ = nullptr;
    // On the queue.
    Announcer announcer_;
    bool isLookDue_ = false;
};

} // namespace halvo::helper
