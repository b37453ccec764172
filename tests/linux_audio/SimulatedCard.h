#pragma once

#include "linux/pipewire/PipeWireHandles.h"
#include "linux/pipewire/PipeWireParams.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <mutex>
#include <spa/monitor/device.h>
#include <spa/pod/builder.h>
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
    struct Port {
        std::string name;
        bool isAvailable = true;
    };
    /// What the card can be: one sink that plays through one of these ports at a time.
    struct Profile {
        std::string name;
        std::vector<Port> ports;
        std::uint32_t rate = 48000; ///< frames per second
        std::size_t channels = 2;   ///< 1 or 2
    };
    /// Of a card without profiles: its only port.
    static constexpr int kRouteIndex = 3;
    static constexpr int kProfileDevice = 5;
    static constexpr const char* kPort = "line";

    /// A card of which the session manager knows no ports, so that it leaves the level alone.
    /// Connects to the server at the socket; card and sink appear later.
    SimulatedCard(const std::string& server, const std::string& sinkName, const DeviceLevel& level);
    /// A card as the session manager handles it: it chooses the ports and restores their levels.
    /// The level is heard at the sink's monitor. Begins in the first profile at full scale.
    SimulatedCard(const std::string& server, const std::string& sinkName,
                  std::vector<Profile> profiles);
    ~SimulatedCard();

    /// The card's own knob; `isSaved`: the session manager is to keep it for the port.
    void turn(const DeviceLevel& level, bool isSaved = false);
    /// Something is plugged into a jack of the present profile, or out.
    void setAvailable(const std::string& port, bool isAvailable);
    /// Somebody switches the port. The level stays, as on a mixer that all ports share.
    void switchPort(const std::string& port);
    /// The sink goes, and one of that profile comes under the same name, at full scale.
    void switchProfile(const std::string& name);

    /// Of the port that plays.
    DeviceLevel level();
    /// Every request for a route so far.
    std::vector<Request> requests();

  private:
    struct Route;

    SimulatedCard(const std::string& server, const std::string& sinkName,
                  std::vector<Profile> profiles, const DeviceLevel& level);
    static const spa_device_methods& methods();
    bool isManaged() const { return !profiles_.empty(); }
    void exportCard();
    void createSink();
    void report(std::initializer_list<std::uint32_t> changed);
    void reportLevel();
    /// What the card tells of a parameter.
    std::vector<Route> allRoutes() const;
    std::vector<Route> activeRoutes() const;
    spa_pod* buildRoute(spa_pod_builder& builder, std::uint32_t id, const Route& route) const;
    int enumerate(int sequence, std::uint32_t id, std::uint32_t start, std::uint32_t count);
    int setRoute(const spa_pod& param);

    const std::string sinkName_;
    std::mutex mutex_;
    std::vector<Profile> profiles_; ///< empty: not managed
    std::size_t profile_ = 0;
    std::size_t port_ = 0; ///< in the profile
    bool isSaved_ = false;
    DeviceLevel level_;
    std::vector<Request> requests_;
    std::array<spa_param_info, 3> params_{};
    std::uint32_t card_ = 0; ///< the server's number
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
