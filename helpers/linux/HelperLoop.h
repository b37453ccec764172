#pragma once

#include "Announcer.h"
#include "CoverFetcher.h"
#include "EventSource.h"
#include "LineWriter.h"
#include "PlayerTable.h"
#include "PlayerWatch.h"
#include "posix/FileDescriptor.h"

#include <cstdint>
#include <memory>

namespace halvo::helper {

/// The resident helper: follows the players and writes a line for every change, until its parent
/// ends or its output is closed. Without a bus it waits for one. One thread.
class HelperLoop {
  public:
    /// Null when no event loop can be created.
    static std::unique_ptr<HelperLoop> create();
    /// Returns the exit status.
    int run();

  private:
    explicit HelperLoop(Event event);

    bool watchParent();
    void connect();
    void disconnect();
    void playersChanged();
    void goOn();
    void arm(EventSource& timer, Announcer::Time at);
    Announcer::Time now() const;
    EventSource makeTimer(sd_event_time_handler_t handler);

    static int onLook(sd_event_source* source, std::uint64_t time, void* data);
    static int onReconnect(sd_event_source* source, std::uint64_t time, void* data);

    Event event_;
    FileDescriptor parent_;
    EventSource parentEnded_;
    EventSource look_;
    EventSource reconnect_;
    Announcer::Time pause_; ///< before the next attempt to connect to the bus

    PlayerTable players_;
    Announcer announcer_;
    CoverFetcher fetcher_;
    LineWriter writer_;
    std::unique_ptr<PlayerWatch> watch_;
};

} // namespace halvo::helper
