#pragma once

#include "linux/mpris/BusHandles.h"
#include "linux/mpris/PlayerState.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <systemd/sd-event.h>

namespace halvo::helper {

/// Follows the players on one connection to the session bus. All calls are asynchronous: a player
/// that does not answer stays unknown. A handler must not destroy the watch.
class PlayerWatch {
  public:
    struct Handlers {
        std::function<void(const std::string& busName)> onAppeared;
        std::function<void(const std::string& busName)> onGone;
        std::function<void(const std::string& busName, mpris::PlayerProperties)> onTold;
        std::function<void()> onDisconnected;     ///< the bus has ended
        std::function<std::string()> shownPlayer; ///< the answer to a helper that sends a command
    };

    /// Null when there is no bus.
    static std::unique_ptr<PlayerWatch> connect(sd_event* event, Handlers handlers);
    ~PlayerWatch();
    PlayerWatch(const PlayerWatch&) = delete;
    PlayerWatch& operator=(const PlayerWatch&) = delete;

  private:
    struct Entry;

    PlayerWatch(mpris::Bus bus, Handlers handlers);

    bool start(sd_event* event);
    void startService();
    void appeared(const std::string& busName, const std::string& owner);
    void gone(const std::string& busName);
    void ask(Entry& entry);
    void takeSignal(sd_bus_message* signal);

    static int onNames(sd_bus_message* reply, void* data, sd_bus_error* error);
    static int onOwner(sd_bus_message* reply, void* data, sd_bus_error* error);
    static int onOwnerChanged(sd_bus_message* signal, void* data, sd_bus_error* error);
    static int onPropertiesChanged(sd_bus_message* signal, void* data, sd_bus_error* error);
    static int onProperties(sd_bus_message* reply, void* data, sd_bus_error* error);
    static int onDisconnected(sd_bus_message* signal, void* data, sd_bus_error* error);
    static int answerShownPlayer(sd_bus* bus, const char* path, const char* interface,
                                 const char* property, sd_bus_message* reply, void* data,
                                 sd_bus_error* error);

    mpris::Bus bus_;
    Handlers handlers_;
    std::map<std::string, std::unique_ptr<Entry>> players_; ///< by bus name
    mpris::Slot names_;
    mpris::Slot ownerChanged_;
    mpris::Slot propertiesChanged_;
    mpris::Slot disconnected_;
    mpris::Slot service_;
    mpris::Slot serviceName_;
};

} // namespace halvo::helper
