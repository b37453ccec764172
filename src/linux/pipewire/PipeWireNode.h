#pragma once

#include "linux/pipewire/PipeWireHandles.h"
#include "linux/pipewire/PipeWireParams.h"

#include <cstdint>
#include <optional>
#include <string>

namespace halvo {

/// One node of the server's graph: its last reported state. With the connection's lock.
class PipeWireNode {
  public:
    enum class Change { properties, level };
    class Owner {
      public:
        virtual ~Owner() = default;
        /// Connection's thread.
        virtual void nodeChanged(PipeWireNode& node, Change change) = 0;
    };

    /// Sinks report their level; of other nodes only the properties are of interest.
    PipeWireNode(Owner& owner, pw_registry& registry, std::uint32_t globalID,
                 const spa_dict& properties, AudioDeviceID deviceID);
    ~PipeWireNode();

    std::uint32_t globalID() const { return globalID_; }
    AudioDeviceID deviceID() const { return deviceID_; }
    bool isSink() const { return isSink_; }
    /// `node.name`: unique among sinks and stable, unlike the ids.
    const std::string& name() const { return name_; }
    /// For the user interface.
    const std::string& description() const { return description_; }
    const std::string& linkGroup() const { return linkGroup_; }
    /// The card and the part of it that the node plays through, if there is one.
    std::optional<std::uint32_t> cardID() const { return cardID_; }
    std::optional<int> profileDevice() const { return profileDevice_; }

    /// Whether the first properties and the first level, if the node has one, have arrived.
    bool isKnown() const { return infoSeen_ && (!isSink_ || levelSeen_); }
    const LevelUpdate& level() const { return level_; }
    bool setLevel(const LevelUpdate& update) { return writeProps(*proxy_, update); }

    /// Whether the graph has announced the node as a device.
    bool announced = false;

  private:
    static const pw_node_events& events();
    static const pw_proxy_events& proxyEvents();
    void readProperties(const spa_dict& properties);
    void infoChanged(const pw_node_info& info);
    void paramChanged(const spa_pod& props);
    void roundTripDone();

    Owner& owner_;
    const std::uint32_t globalID_;
    const AudioDeviceID deviceID_;
    bool isSink_ = false;
    std::string name_;
    std::string description_;
    std::string linkGroup_;
    std::optional<std::uint32_t> cardID_;
    std::optional<int> profileDevice_;
    bool infoSeen_ = false;
    bool levelSeen_ = false;
    LevelUpdate level_;
    PipeWireProxy<pw_node> proxy_;
    PipeWireHook proxyHook_;
    PipeWireHook hook_;
};

} // namespace halvo
