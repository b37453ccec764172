#pragma once

#include "linux/pipewire/PipeWireObserver.h"
#include "linux/pipewire/SignalMask.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

struct pw_core;
struct pw_data_loop;
struct pw_loop;

namespace halvo {

class PipeWireGraph;

/// A connection to the sound server with its own thread. It reconnects by itself, first after 0.25
/// s, then at growing intervals of at most 5 s. Connections in one process are independent.
class PipeWireConnection {
  public:
    /// Starts the thread and tries to connect; a missing server is not a failure. Null when
    /// libpipewire cannot be initialized. `server` is a socket; empty for the user's session. Any
    /// thread.
    static std::unique_ptr<PipeWireConnection> create(const std::string& server = {});
    /// All observers must have been removed. Not on the connection's own thread.
    ~PipeWireConnection();
    PipeWireConnection(const PipeWireConnection&) = delete;
    PipeWireConnection& operator=(const PipeWireConnection&) = delete;

    /// Waits until devices and default are known; false at once without a server. Any thread except
    /// the connection's own.
    bool waitUntilReady(std::chrono::milliseconds longest);

    /// Locks out the connection's thread. Everything below needs it, except on that thread, which
    /// always holds it. Never nested: waiting releases one level only.
    class Lock {
      public:
        explicit Lock(PipeWireConnection& connection);
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

        /// Lets the connection's thread run until `condition` holds; false after `longest` or when
        /// the server is lost. Not on the connection's own thread.
        bool waitFor(const std::function<bool()>& condition, std::chrono::milliseconds longest);
        /// Waits until the server has processed everything sent so far; false as above.
        bool roundTrip(std::chrono::milliseconds longest);

      private:
        SignalMask mask_;
        PipeWireConnection& connection_;
    };

    /// Whether devices and default are known.
    bool isReady() const;
    /// Null while disconnected.
    pw_core* core() const;
    pw_loop* loop() const;
    pw_data_loop* dataLoop() const;
    PipeWireGraph& graph();

    /// Observers are called in the order in which they were added; one may remove itself while it
    /// is called.
    void add(PipeWireObserver& observer);
    void remove(PipeWireObserver& observer);

  private:
    struct Implementation;
    explicit PipeWireConnection(std::unique_ptr<Implementation> implementation);

    std::unique_ptr<Implementation> implementation_;
};

} // namespace halvo
