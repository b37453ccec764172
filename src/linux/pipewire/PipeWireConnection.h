#pragma once

#include "linux/pipewire/PipeWireObserver.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

struct pw_core;
struct pw_data_loop;
struct pw_loop;

namespace halvo {

class PipeWireGraph;
class PipeWireHook;

/// A connection to the sound server with a thread of its own, which comes back by itself: a server
/// that is missing or goes away is tried again after 0.25 s, then ever more rarely, at least every
/// 5 s. Several connections in one process do not know each other.
class PipeWireConnection {
  public:
    /// Starts the thread and makes the first attempt; a server that is not there is no failure.
    /// Null when libpipewire itself cannot start. `server` is a socket, empty: the user's session.
    /// Any thread.
    static std::unique_ptr<PipeWireConnection> create(const std::string& server = {});
    /// Observers must be gone. Not on the connection's own thread.
    ~PipeWireConnection();
    PipeWireConnection(const PipeWireConnection&) = delete;
    PipeWireConnection& operator=(const PipeWireConnection&) = delete;

    /// Waits until devices and default are known; at once false when no server is there. Any thread
    /// but the connection's own.
    bool waitUntilReady(std::chrono::milliseconds longest);

    /// Keeps the connection's thread out while it lives; everything below needs it, except on that
    /// thread, which always has it. Never nested: waiting gives up one level only.
    class Lock {
      public:
        explicit Lock(PipeWireConnection& connection);
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

        /// Lets the connection's thread run until `condition` holds; false when `longest` passed
        /// or the server went. Not on the connection's own thread.
        bool waitFor(const std::function<bool()>& condition, std::chrono::milliseconds longest);
        /// Waits until the server has dealt with everything sent so far; false as above.
        bool roundTrip(std::chrono::milliseconds longest);

      private:
        PipeWireConnection& connection_;
    };

    /// Whether devices and default are known.
    bool isReady() const;
    /// Null while there is no server.
    pw_core* core() const;
    pw_loop* loop() const;
    pw_data_loop* dataLoop() const;
    /// Takes a listener off on the render thread: when this returns, no cycle is in it any more.
    void removeBetweenCycles(PipeWireHook& hook);
    PipeWireGraph& graph();

    /// Observers are called in the order in which they came; one may leave while it is called.
    void add(PipeWireObserver& observer);
    void remove(PipeWireObserver& observer);

  private:
    struct Implementation;
    explicit PipeWireConnection(std::unique_ptr<Implementation> implementation);

    std::unique_ptr<Implementation> implementation_;
};

} // namespace halvo
