#include "linux/pipewire/PipeWireGraph.h"

#include "linux/pipewire/PipeWireWakeUp.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace halvo {

namespace {

/// The link group of this program's own nodes.
constexpr const char* kOwnGroup = "halvo";
/// A restarted server counts serial numbers from 0 again; this keeps the ids apart.
constexpr AudioDeviceID kSerialsPerServer = 1U << 24;

bool isOwn(const std::string& linkGroup) {
    return linkGroup == kOwnGroup || linkGroup == PipeWireWakeUp::kLinkGroup;
}

std::uint32_t numberOf(const spa_dict& properties, const char* key) {
    const char* text = spa_dict_lookup(&properties, key);
    std::uint32_t value = 0;
    if (text) {
        const std::string_view digits(text);
        (void)std::from_chars(digits.data(), digits.data() + digits.size(), value); // 0 if not one
    }
    return value;
}

} // namespace

PipeWireGraph::~PipeWireGraph() {
    detach();
}

void PipeWireGraph::attach(pw_core& core, std::uint32_t epoch) {
    epoch_ = epoch;
    registry_.reset(pw_core_get_registry(&core, PW_VERSION_REGISTRY, 0));
    if (registry_) pw_registry_add_listener(registry_.get(), hook_.get(), &events(), this);
}

void PipeWireGraph::detach() {
    hook_.remove();
    registry_.reset();
    defaults_.reset();
    links_.clear();
    nodes_.clear();
    cards_.clear();
    told_.clear();
}

std::vector<AudioDeviceID> PipeWireGraph::sinks() const {
    std::vector<AudioDeviceID> ids;
    for (const auto& [device, told] : told_)
        ids.push_back(device);
    return ids;
}

const PipeWireNode* PipeWireGraph::sink(AudioDeviceID device) const {
    const auto found = std::ranges::find_if(nodes_, [device](const auto& entry) {
        return entry.second->announced && entry.second->deviceID() == device;
    });
    return found == nodes_.end() ? nullptr : found->second.get();
}

const PipeWireNode* PipeWireGraph::sinkNamed(const std::string& name) const {
    const PipeWireNode* first = nullptr;
    for (const auto& [id, node] : nodes_) {
        if (!node->announced || node->name() != name) continue;
        if (!first || node->deviceID() < first->deviceID()) first = node.get();
    }
    return first;
}

PipeWireCard* PipeWireGraph::card(const PipeWireNode& sink) const {
    if (!sink.cardID() || !sink.profileDevice()) return nullptr;
    const auto found = cards_.find(*sink.cardID());
    return found == cards_.end() ? nullptr : found->second.get();
}

const CardRoute* PipeWireGraph::route(const PipeWireNode& sink) const {
    const auto* owner = card(sink);
    return owner ? owner->route(*sink.profileDevice()) : nullptr;
}

LevelUpdate PipeWireGraph::level(const PipeWireNode& sink) const {
    const auto* way = route(sink);
    return way ? way->level : sink.level();
}

std::string PipeWireGraph::port(const PipeWireNode& sink) const {
    const auto* way = route(sink);
    return way ? way->name : "";
}

bool PipeWireGraph::setLevel(const PipeWireNode& sink, const LevelUpdate& update,
                             LevelPersistence persistence) {
    if (const auto* way = route(sink)) return card(sink)->setLevel(*way, update, persistence);
    const auto node = nodes_.find(sink.globalID());
    return node != nodes_.end() && node->second->setLevel(update);
}

bool PipeWireGraph::hasForeignStreams(const PipeWireNode& sink) const {
    return std::ranges::any_of(links_, [this, &sink](const auto& entry) {
        const auto& link = entry.second;
        if (link.inputNode != sink.globalID()) return false;
        const auto source = nodes_.find(link.outputNode);
        // A stream that is not known yet may be loud, so it counts.
        return source == nodes_.end() || !isOwn(source->second->linkGroup());
    });
}

const pw_registry_events& PipeWireGraph::events() {
    static const pw_registry_events events = [] {
        pw_registry_events table{};
        table.version = PW_VERSION_REGISTRY_EVENTS;
        table.global = [](void* self, std::uint32_t id, std::uint32_t, const char* type,
                          std::uint32_t, const spa_dict* properties) {
            if (properties)
                static_cast<PipeWireGraph*>(self)->globalAppeared(id, type, *properties);
        };
        table.global_remove = [](void* self, std::uint32_t id) {
            static_cast<PipeWireGraph*>(self)->globalWent(id);
        };
        return table;
    }();
    return events;
}

void PipeWireGraph::globalAppeared(std::uint32_t id, const char* type, const spa_dict& properties) {
    const std::string_view kind(type);
    if (kind == PW_TYPE_INTERFACE_Node) {
        nodeAppeared(id, properties);
    } else if (kind == PW_TYPE_INTERFACE_Device) {
        cards_[id] = std::make_unique<PipeWireCard>(static_cast<PipeWireCard::Owner&>(*this),
                                                    *registry_, id);
    } else if (kind == PW_TYPE_INTERFACE_Link) {
        links_[id] = {numberOf(properties, PW_KEY_LINK_OUTPUT_NODE),
                      numberOf(properties, PW_KEY_LINK_INPUT_NODE)};
        news_.streamsChanged();
    } else if (kind == PW_TYPE_INTERFACE_Metadata) {
        const char* name = spa_dict_lookup(&properties, PW_KEY_METADATA_NAME);
        if (!name || std::string_view(name) != "default") return;
        defaults_ =
            std::make_unique<PipeWireDefaults>(*registry_, id, [this] { news_.defaultsChanged(); });
    }
}

void PipeWireGraph::globalWent(std::uint32_t id) {
    if (const auto node = nodes_.find(id); node != nodes_.end()) {
        const auto gone = std::move(node->second);
        nodes_.erase(node);
        if (told_.erase(gone->deviceID()) > 0) news_.devicesChanged();
    } else if (links_.erase(id) > 0) {
        news_.streamsChanged();
    } else if (cards_.erase(id) == 0 && defaults_ && defaults_->globalID() == id) {
        defaults_.reset();
        news_.defaultsChanged();
    }
}

void PipeWireGraph::nodeAppeared(std::uint32_t id, const spa_dict& properties) {
    const auto device =
        numberOf(properties, PW_KEY_OBJECT_SERIAL) % kSerialsPerServer + epoch_ * kSerialsPerServer;
    nodes_[id] = std::make_unique<PipeWireNode>(static_cast<PipeWireNode::Owner&>(*this),
                                                *registry_, id, properties, device);
}

void PipeWireGraph::nodeChanged(PipeWireNode& node, PipeWireNode::Change change) {
    if (!node.isSink()) return;
    if (!node.announced) {
        announceWhenKnown(node);
    } else if (change == PipeWireNode::Change::level) {
        reportLevel(node);
    } else if (auto& told = told_[node.deviceID()]; told.description != node.description()) {
        told.description = node.description();
        news_.devicesChanged();
    }
}

void PipeWireGraph::cardChanged(PipeWireCard& changed) {
    for (const auto& [id, node] : nodes_) {
        if (!node->isSink() || node->cardID() != changed.globalID()) continue;
        if (node->announced) {
            reportLevel(*node);
        } else {
            announceWhenKnown(*node);
        }
    }
}

void PipeWireGraph::announceWhenKnown(PipeWireNode& node) {
    if (!node.isKnown() || node.name().empty()) return;
    if (const auto* owner = card(node); owner && !owner->isKnown()) return;
    node.announced = true;
    told_[node.deviceID()] = {node.description(), level(node), port(node)};
    news_.devicesChanged();
}

void PipeWireGraph::reportLevel(PipeWireNode& node) {
    auto& told = told_[node.deviceID()];
    const auto now = level(node);
    const bool volume = told.level.channelVolumes != now.channelVolumes;
    const bool mute = told.level.muted != now.muted;
    told.level = now;
    const auto before = std::exchange(told.port, port(node));
    if (told.port != before) news_.portChanged();
    if (volume) news_.volumeChanged(node.deviceID());
    if (mute) news_.muteChanged(node.deviceID());
}

} // namespace halvo
