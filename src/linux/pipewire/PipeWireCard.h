#pragma once

#include "linux/pipewire/PipeWireHandles.h"
#include "linux/pipewire/PipeWireParams.h"

#include <cstdint>
#include <vector>

namespace halvo {

/// A sound card: holds the volumes of the sinks that play through it. With the connection's lock.
class PipeWireCard {
  public:
    class Owner {
      public:
        virtual ~Owner() = default;
        /// Connection's thread.
        virtual void cardChanged(PipeWireCard& card) = 0;
    };

    PipeWireCard(Owner& owner, pw_registry& registry, std::uint32_t globalID);
    ~PipeWireCard();

    std::uint32_t globalID() const { return globalID_; }
    /// Whether the first complete list of routes has arrived.
    bool isKnown() const { return known_; }
    /// The output route of `card.profile.device`; null when it has none with a volume.
    const CardRoute* route(int profileDevice) const;
    bool setLevel(const CardRoute& route, const LevelUpdate& update, LevelPersistence persistence) {
        return writeRoute(*proxy_, route, update, persistence);
    }

  private:
    static const pw_device_events& events();
    static const pw_proxy_events& proxyEvents();
    void infoChanged(const pw_device_info& info);
    void roundTripDone(int sequence);

    Owner& owner_;
    const std::uint32_t globalID_;
    bool known_ = false;
    std::vector<CardRoute> routes_;
    std::vector<CardRoute> incoming_;
    int question_ = 0; ///< sequence number of the last request for the routes
    int complete_ = 0; ///< of the round trip behind it
    PipeWireProxy<pw_device> proxy_;
    PipeWireHook proxyHook_;
    PipeWireHook hook_;
};

} // namespace halvo
