#include "linux/pipewire/PipeWireNode.h"

#include <charconv>
#include <string_view>

namespace halvo {

namespace {

template <typename Number> std::optional<Number> number(const char* text) {
    if (!text) return std::nullopt;
    const std::string_view digits(text);
    Number value{};
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (result.ec != std::errc{}) return std::nullopt;
    return value;
}

std::string text(const spa_dict& properties, const char* key) {
    const char* value = spa_dict_lookup(&properties, key);
    return value ? value : "";
}

bool hasReadableProps(const pw_node_info& info) {
    for (std::uint32_t i = 0; i < info.n_params; ++i) {
        if (info.params[i].id == SPA_PARAM_Props && (info.params[i].flags & SPA_PARAM_INFO_READ)) {
            return true;
        }
    }
    return false;
}

} // namespace

PipeWireNode::PipeWireNode(Owner& owner, pw_registry& registry, std::uint32_t globalID,
                           const spa_dict& properties, AudioDeviceID deviceID)
    : owner_(owner), globalID_(globalID), deviceID_(deviceID),
      isSink_(text(properties, PW_KEY_MEDIA_CLASS) == "Audio/Sink") {
    readProperties(properties);
    proxy_.reset(static_cast<pw_node*>(
        pw_registry_bind(&registry, globalID, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0)));
    if (!proxy_) return;
    auto* proxy = reinterpret_cast<pw_proxy*>(proxy_.get());
    pw_proxy_add_listener(proxy, proxyHook_.get(), &proxyEvents(), this);
    pw_node_add_listener(proxy_.get(), hook_.get(), &events(), this);
    if (isSink_) {
        std::uint32_t ids[] = {SPA_PARAM_Props};
        pw_node_subscribe_params(proxy_.get(), ids, 1);
    }
}

PipeWireNode::~PipeWireNode() = default;

const pw_node_events& PipeWireNode::events() {
    static const pw_node_events events = [] {
        pw_node_events table{};
        table.version = PW_VERSION_NODE_EVENTS;
        table.info = [](void* self, const pw_node_info* info) {
            static_cast<PipeWireNode*>(self)->infoChanged(*info);
        };
        table.param = [](void* self, int, std::uint32_t id, std::uint32_t, std::uint32_t,
                         const spa_pod* param) {
            if (id == SPA_PARAM_Props && param) {
                static_cast<PipeWireNode*>(self)->paramChanged(*param);
            }
        };
        return table;
    }();
    return events;
}

const pw_proxy_events& PipeWireNode::proxyEvents() {
    static const pw_proxy_events events = [] {
        pw_proxy_events table{};
        table.version = PW_VERSION_PROXY_EVENTS;
        table.done = [](void* self, int) { static_cast<PipeWireNode*>(self)->roundTripDone(); };
        return table;
    }();
    return events;
}

void PipeWireNode::readProperties(const spa_dict& properties) {
    name_ = text(properties, PW_KEY_NODE_NAME);
    description_ = text(properties, PW_KEY_NODE_DESCRIPTION);
    if (description_.empty()) description_ = text(properties, PW_KEY_NODE_NICK);
    if (description_.empty()) description_ = name_;
    linkGroup_ = text(properties, PW_KEY_NODE_LINK_GROUP);
    cardID_ = number<std::uint32_t>(spa_dict_lookup(&properties, PW_KEY_DEVICE_ID));
    profileDevice_ = number<int>(spa_dict_lookup(&properties, "card.profile.device"));
}

void PipeWireNode::infoChanged(const pw_node_info& info) {
    if (info.props && (info.change_mask & PW_NODE_CHANGE_MASK_PROPS)) readProperties(*info.props);
    if (!infoSeen_) {
        infoSeen_ = true;
        // A sink without a volume counts as known after it had time to report one.
        if (isSink_ && !hasReadableProps(info)) {
            pw_proxy_sync(reinterpret_cast<pw_proxy*>(proxy_.get()), 0);
        }
    }
    owner_.nodeChanged(*this, Change::properties);
}

void PipeWireNode::paramChanged(const spa_pod& props) {
    // One of several: the driver's own parameters follow the volume's.
    auto update = readProps(props);
    if (update.muted) level_.muted = update.muted;
    if (update.channelVolumes) {
        level_.channelVolumes = std::move(update.channelVolumes);
        levelSeen_ = true;
    }
    owner_.nodeChanged(*this, Change::level);
}

void PipeWireNode::roundTripDone() {
    levelSeen_ = true;
    owner_.nodeChanged(*this, Change::level);
}

} // namespace halvo
