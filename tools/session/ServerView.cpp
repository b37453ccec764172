#include "session/ServerView.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <nlohmann/json.hpp>
#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>
#include <spa/param/props.h>
#include <spa/pod/builder.h>
#include <spa/pod/iter.h>

namespace halvo::session {

namespace {

constexpr std::uint32_t kMaxChannels = 64;

/// The node's name in a default's value, which is {"name":"..."}.
std::string nameIn(const char* value) {
    const auto json = nlohmann::json::parse(value, nullptr, false);
    if (!json.is_object() || !json.contains("name") || !json["name"].is_string()) return {};
    return json["name"].get<std::string>();
}

} // namespace

/// The connection; everything behind the thread loop's lock.
struct ServerView::Connection {
    struct BoundNode {
        Connection* connection;
        Node node;
        pw_proxy* proxy = nullptr;
        spa_hook listener{};
    };

    pw_thread_loop* loop = nullptr;
    pw_context* context = nullptr;
    pw_core* core = nullptr;
    pw_registry* registry = nullptr;
    pw_metadata* metadata = nullptr;
    std::uint32_t metadataId = 0;
    spa_hook coreListener{};
    spa_hook registryListener{};
    spa_hook metadataListener{};
    std::vector<std::unique_ptr<BoundNode>> nodes;
    std::vector<pw_proxy*> created;
    std::string defaultSink;
    std::optional<std::string> configured;
    bool connected = false;

    ~Connection() {
        if (loop != nullptr) pw_thread_loop_stop(loop);
        for (auto& entry : nodes)
            pw_proxy_destroy(entry->proxy);
        for (auto* proxy : created)
            pw_proxy_destroy(proxy);
        if (metadata != nullptr) pw_proxy_destroy(reinterpret_cast<pw_proxy*>(metadata));
        if (registry != nullptr) pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry));
        if (core != nullptr) pw_core_disconnect(core);
        if (context != nullptr) pw_context_destroy(context);
        if (loop != nullptr) pw_thread_loop_destroy(loop);
        pw_deinit();
    }

    BoundNode* find(const std::string& name) {
        const auto found = std::ranges::find_if(
            nodes, [&](const auto& entry) { return entry->node.name == name; });
        return found == nodes.end() ? nullptr : found->get();
    }

    void addNode(std::uint32_t id, const spa_dict* properties);
    void addMetadata(std::uint32_t id, const spa_dict* properties);
    void remove(std::uint32_t id);
    /// Sends one property, which `build` writes, to the node of that name; false without one.
    bool setProperty(const std::string& name, const std::function<void(spa_pod_builder*)>& build);

    static void onError(void* data, std::uint32_t id, int, int result, const char*) {
        if (id == PW_ID_CORE && result == -EPIPE) static_cast<Connection*>(data)->connected = false;
    }
    static void onGlobal(void* data, std::uint32_t id, std::uint32_t, const char* type,
                         std::uint32_t, const spa_dict* properties) {
        auto* self = static_cast<Connection*>(data);
        if (properties == nullptr) return;
        if (std::strcmp(type, PW_TYPE_INTERFACE_Node) == 0) self->addNode(id, properties);
        if (std::strcmp(type, PW_TYPE_INTERFACE_Metadata) == 0) self->addMetadata(id, properties);
    }
    static void onGlobalRemove(void* data, std::uint32_t id) {
        static_cast<Connection*>(data)->remove(id);
    }
    static int onProperty(void* data, std::uint32_t, const char* key, const char*,
                          const char* value);
    static void onNodeInfo(void* data, const pw_node_info* info) {
        static_cast<BoundNode*>(data)->node.hasPorts =
            info->n_input_ports + info->n_output_ports > 0;
    }
    static void onNodeParam(void* data, int, std::uint32_t, std::uint32_t, std::uint32_t,
                            const spa_pod* param);
};

namespace {

/// Holds the connection's lock.
class Lock {
  public:
    explicit Lock(pw_thread_loop* loop) : loop_(loop) { pw_thread_loop_lock(loop_); }
    ~Lock() { pw_thread_loop_unlock(loop_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

  private:
    pw_thread_loop* loop_;
};

} // namespace

int ServerView::Connection::onProperty(void* data, std::uint32_t, const char* key, const char*,
                                       const char* value) {
    auto* self = static_cast<Connection*>(data);
    const std::string name = value != nullptr ? nameIn(value) : std::string();
    if (key == nullptr || std::strcmp(key, "default.audio.sink") == 0) self->defaultSink = name;
    if (key == nullptr || std::strcmp(key, "default.configured.audio.sink") == 0) {
        self->configured = value != nullptr ? std::optional(name) : std::nullopt;
    }
    return 0;
}

void ServerView::Connection::onNodeParam(void* data, int, std::uint32_t, std::uint32_t,
                                         std::uint32_t, const spa_pod* param) {
    auto& node = static_cast<BoundNode*>(data)->node;
    if (param == nullptr) return;
    if (const auto* volumes = spa_pod_find_prop(param, nullptr, SPA_PROP_channelVolumes)) {
        std::array<float, kMaxChannels> values{};
        const auto count =
            spa_pod_copy_array(&volumes->value, SPA_TYPE_Float, values.data(), kMaxChannels);
        node.volumes.assign(values.begin(), values.begin() + count);
    }
    if (const auto* mute = spa_pod_find_prop(param, nullptr, SPA_PROP_mute)) {
        (void)spa_pod_get_bool(&mute->value, &node.muted);
    }
}

void ServerView::Connection::addNode(std::uint32_t id, const spa_dict* properties) {
    static const pw_node_events events = [] {
        pw_node_events result{};
        result.version = PW_VERSION_NODE_EVENTS;
        result.info = onNodeInfo;
        result.param = onNodeParam;
        return result;
    }();
    const char* name = spa_dict_lookup(properties, PW_KEY_NODE_NAME);
    auto entry = std::make_unique<BoundNode>();
    entry->connection = this;
    entry->node.id = id;
    entry->node.name = name != nullptr ? name : "";
    entry->proxy = static_cast<pw_proxy*>(
        pw_registry_bind(registry, id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0));
    if (entry->proxy == nullptr) return;
    auto* node = reinterpret_cast<pw_node*>(entry->proxy);
    pw_node_add_listener(node, &entry->listener, &events, entry.get());
    std::uint32_t wanted = SPA_PARAM_Props;
    pw_node_subscribe_params(node, &wanted, 1);
    nodes.push_back(std::move(entry));
}

void ServerView::Connection::addMetadata(std::uint32_t id, const spa_dict* properties) {
    static const pw_metadata_events events = [] {
        pw_metadata_events result{};
        result.version = PW_VERSION_METADATA_EVENTS;
        result.property = onProperty;
        return result;
    }();
    const char* name = spa_dict_lookup(properties, PW_KEY_METADATA_NAME);
    if (name == nullptr || std::strcmp(name, "default") != 0 || metadata != nullptr) return;
    metadata = static_cast<pw_metadata*>(
        pw_registry_bind(registry, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0));
    if (metadata == nullptr) return;
    metadataId = id;
    pw_metadata_add_listener(metadata, &metadataListener, &events, this);
}

void ServerView::Connection::remove(std::uint32_t id) {
    std::erase_if(nodes, [&](const auto& entry) {
        if (entry->node.id != id) return false;
        pw_proxy_destroy(entry->proxy);
        return true;
    });
    if (metadata != nullptr && metadataId == id) {
        pw_proxy_destroy(reinterpret_cast<pw_proxy*>(metadata));
        metadata = nullptr;
        defaultSink.clear();
        configured.reset();
    }
}

bool ServerView::Connection::setProperty(const std::string& name,
                                         const std::function<void(spa_pod_builder*)>& build) {
    const Lock lock(loop);
    auto* entry = find(name);
    if (entry == nullptr) return false;
    std::array<std::uint8_t, 1024> buffer{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, buffer.data(), static_cast<std::uint32_t>(buffer.size()));
    spa_pod_frame frame{};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_Props, SPA_PARAM_Props);
    build(&builder);
    auto* pod = static_cast<spa_pod*>(spa_pod_builder_pop(&builder, &frame));
    auto* node = reinterpret_cast<pw_node*>(entry->proxy);
    return pw_node_set_param(node, SPA_PARAM_Props, 0, pod) >= 0;
}

std::unique_ptr<ServerView> ServerView::connect(const std::string& socket) {
    static const pw_core_events coreEvents = [] {
        pw_core_events result{};
        result.version = PW_VERSION_CORE_EVENTS;
        result.error = Connection::onError;
        return result;
    }();
    static const pw_registry_events registryEvents = [] {
        pw_registry_events result{};
        result.version = PW_VERSION_REGISTRY_EVENTS;
        result.global = Connection::onGlobal;
        result.global_remove = Connection::onGlobalRemove;
        return result;
    }();
    pw_init(nullptr, nullptr);
    auto connection = std::make_unique<Connection>();
    Connection& self = *connection;
    self.loop = pw_thread_loop_new("server-view", nullptr);
    if (self.loop == nullptr) return nullptr;
    // Real-time priority would be asked for on this process's own bus, which is not the session's.
    self.context = pw_context_new(pw_thread_loop_get_loop(self.loop),
                                  pw_properties_new("module.rt", "false", nullptr), 0);
    if (self.context == nullptr) return nullptr;
    self.core = pw_context_connect(
        self.context, pw_properties_new(PW_KEY_REMOTE_NAME, socket.c_str(), nullptr), 0);
    if (self.core == nullptr) return nullptr;
    self.connected = true;
    pw_core_add_listener(self.core, &self.coreListener, &coreEvents, &self);
    self.registry = pw_core_get_registry(self.core, PW_VERSION_REGISTRY, 0);
    pw_registry_add_listener(self.registry, &self.registryListener, &registryEvents, &self);
    pw_thread_loop_start(self.loop);
    return std::unique_ptr<ServerView>(new ServerView(std::move(connection)));
}

ServerView::ServerView(std::unique_ptr<Connection> connection)
    : connection_(std::move(connection)) {}

ServerView::~ServerView() = default;

bool ServerView::hasManager() const {
    const Lock lock(connection_->loop);
    return connection_->metadata != nullptr;
}

bool ServerView::isConnected() const {
    const Lock lock(connection_->loop);
    return connection_->connected;
}

std::optional<ServerView::Node> ServerView::node(const std::string& name) const {
    const Lock lock(connection_->loop);
    const auto* entry = connection_->find(name);
    return entry != nullptr ? std::optional(entry->node) : std::nullopt;
}

std::vector<ServerView::Node> ServerView::nodes() const {
    const Lock lock(connection_->loop);
    std::vector<Node> result;
    for (const auto& entry : connection_->nodes)
        result.push_back(entry->node);
    return result;
}

std::string ServerView::defaultSink() const {
    const Lock lock(connection_->loop);
    return connection_->defaultSink;
}

std::optional<std::string> ServerView::configuredDefault() const {
    const Lock lock(connection_->loop);
    return connection_->configured;
}

bool ServerView::setDefault(const std::string& name) {
    const Lock lock(connection_->loop);
    if (connection_->metadata == nullptr) return false;
    const std::string value = nlohmann::json{{"name", name}}.dump();
    return pw_metadata_set_property(connection_->metadata, PW_ID_CORE,
                                    "default.configured.audio.sink", "Spa:String:JSON",
                                    value.c_str()) >= 0;
}

bool ServerView::setVolume(const std::string& name, const std::vector<float>& volumes) {
    return connection_->setProperty(name, [&](spa_pod_builder* builder) {
        spa_pod_builder_prop(builder, SPA_PROP_channelVolumes, 0);
        spa_pod_builder_array(builder, sizeof(float), SPA_TYPE_Float,
                              static_cast<std::uint32_t>(volumes.size()), volumes.data());
    });
}

bool ServerView::setMuted(const std::string& name, bool muted) {
    return connection_->setProperty(name, [muted](spa_pod_builder* builder) {
        spa_pod_builder_prop(builder, SPA_PROP_mute, 0);
        spa_pod_builder_bool(builder, muted);
    });
}

bool ServerView::createNode(const std::vector<std::pair<std::string, std::string>>& properties) {
    const Lock lock(connection_->loop);
    pw_properties* dict = pw_properties_new(nullptr, nullptr);
    for (const auto& [key, value] : properties) {
        pw_properties_set(dict, key.c_str(), value.c_str());
    }
    auto* proxy = static_cast<pw_proxy*>(pw_core_create_object(
        connection_->core, "adapter", PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, &dict->dict, 0));
    pw_properties_free(dict);
    if (proxy == nullptr) return false;
    connection_->created.push_back(proxy);
    return true;
}

bool ServerView::destroyNode(const std::string& name) {
    const Lock lock(connection_->loop);
    const auto* entry = connection_->find(name);
    if (entry == nullptr) return false;
    return pw_registry_destroy(connection_->registry, entry->node.id) >= 0;
}

} // namespace halvo::session
