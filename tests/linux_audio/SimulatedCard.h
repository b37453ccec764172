#pragma once

#include "linux/pipewire/PipeWireHandles.h"
#include "linux/pipewire/PipeWireParams.h"

#include <cstdint>
#include <mutex>
#include <spa/monitor/device.h>
#include <string>
#include <vector>

namespace halvo {

/// A sound card with one sink that keeps its volume in a route, as hardware does: exported to the
/// server over a connection that does nothing else (a client that queries its own card's routes
/// would deadlock).
class SimulatedCard {
  public:
    struct Request {
        int index = 0;
        int profileDevice = 0;
        bool saved = false;
        bool operator==(const Request&) const = default;
    };
    static constexpr int kRouteIndex = 3;
    static constexpr int kProfileDevice = 5;

    /// Connects to the server at the socket; card and sink appear later.
    SimulatedCard(const std::string& server, const std::string& sinkName, const DeviceLevel& level);
    ~SimulatedCard();

    /// The card's own knob.
    void turn(const DeviceLevel& level);
    DeviceLevel level();
    /// Every request for a route so far.
    std::vector<Request> requests();

  private:
    static const spa_device_methods& methods();
    void exportCard();
    void createSink(std::uint32_t card);
    void reportChange();
    int enumerate(int sequence, std::uint32_t id, std::uint32_t start, std::uint32_t count);
    int setRoute(const spa_pod& param);

    const std::string sinkName_;
    std::mutex mutex_;
    DeviceLevel level_;
    std::vector<Request> requests_;
    std::uint32_t changes_ = 0;
    spa_device device_{};
    spa_hook_list listeners_{};
    pw_thread_loop* loop_ = nullptr;
    pw_context* context_ = nullptr;
    pw_core* core_ = nullptr;
    PipeWireProxy<pw_proxy> exported_;
    PipeWireHook exportedHook_;
    PipeWireProxy<pw_proxy> sink_;
};

} // namespace halvo
