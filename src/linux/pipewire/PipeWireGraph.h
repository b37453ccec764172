#pragma once

#include "linux/pipewire/PipeWireCard.h"
#include "linux/pipewire/PipeWireDefaults.h"
#include "linux/pipewire/PipeWireNode.h"
#include "linux/pipewire/PipeWireObserver.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

/// A mirror of the server's state: sinks with their levels, the streams into them, the default. A
/// sink appears only when its level is known. With the connection's lock.
class PipeWireGraph final : private PipeWireNode::Owner, private PipeWireCard::Owner {
  public:
    /// `news` is told every change, whether or not the connection is ready.
    explicit PipeWireGraph(PipeWireObserver& news) : news_(news) {}
    ~PipeWireGraph() override;

    /// Starts to follow a server. `epoch` counts the servers, from 0.
    void attach(pw_core& core, std::uint32_t epoch);
    /// Drops everything; call before the core is destroyed.
    void detach();

    /// The sinks in the order in which they appeared.
    std::vector<AudioDeviceID> sinks() const;
    /// Null when there is none.
    const PipeWireNode* sink(AudioDeviceID device) const;
    const PipeWireNode* sinkNamed(const std::string& name) const;
    /// Empty when the sink has no volume. Not limited to 1.
    LevelUpdate level(const PipeWireNode& sink) const;
    /// The name of the card's route that the sink plays through; empty without one.
    std::string port(const PipeWireNode& sink) const;
    /// Whether a card keeps the sink's level.
    bool hasRoute(const PipeWireNode& sink) const { return route(sink) != nullptr; }
    /// False while disconnected.
    bool setLevel(const PipeWireNode& sink, const LevelUpdate& update,
                  LevelPersistence persistence);
    /// Whether a node that does not belong to this program plays into the sink.
    bool hasForeignStreams(const PipeWireNode& sink) const;
    /// Null without a session manager.
    PipeWireDefaults* defaults() const { return defaults_.get(); }

  private:
    struct Link {
        std::uint32_t outputNode = 0;
        std::uint32_t inputNode = 0;
    };

    static const pw_registry_events& events();
    void globalAppeared(std::uint32_t id, const char* type, const spa_dict& properties);
    void globalWent(std::uint32_t id);
    void nodeAppeared(std::uint32_t id, const spa_dict& properties);
    void nodeChanged(PipeWireNode& node, PipeWireNode::Change change) override;
    void cardChanged(PipeWireCard& card) override;
    void announceWhenKnown(PipeWireNode& node);
    void reportLevel(PipeWireNode& node);
    const CardRoute* route(const PipeWireNode& sink) const;
    PipeWireCard* card(const PipeWireNode& sink) const;

    PipeWireObserver& news_;
    std::uint32_t epoch_ = 0;
    std::map<std::uint32_t, std::unique_ptr<PipeWireNode>> nodes_;
    std::map<std::uint32_t, std::unique_ptr<PipeWireCard>> cards_;
    std::map<std::uint32_t, Link> links_;
    std::unique_ptr<PipeWireDefaults> defaults_;
    /// The last announced state of each sink.
    struct Told {
        std::string description;
        LevelUpdate level;
        std::string port;
    };
    std::map<AudioDeviceID, Told> told_;
    PipeWireProxy<pw_registry> registry_;
    PipeWireHook hook_;
};

} // namespace halvo
