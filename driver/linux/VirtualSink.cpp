#include "driver/linux/VirtualSink.h"
#include "platform/VirtualOutput.h"

#include <cstring>
#include <utility>

namespace halvo::driver {

namespace {

bool hasValue(const spa_dict* properties, const char* key, const char* value) {
    const char* found = spa_dict_lookup(properties, key);
    return found != nullptr && std::strcmp(found, value) == 0;
}

} // namespace

VirtualSink::VirtualSink(std::function<void()> changed) : changed_(std::move(changed)) {}

VirtualSink::~VirtualSink() {
    requestFailed();
}

void VirtualSink::consider(std::uint32_t id, const char* type, const spa_dict* properties) {
    if (isPresent() || std::strcmp(type, PW_TYPE_INTERFACE_Node) != 0) return;
    if (!hasValue(properties, PW_KEY_NODE_NAME, kVirtualDeviceUID)) return;
    if (!hasValue(properties, PW_KEY_MEDIA_CLASS, "Audio/Sink")) return;
    id_ = id;
    changed_();
}

void VirtualSink::forget(std::uint32_t id) {
    if (id != id_) return;
    id_ = SPA_ID_INVALID;
    requestFailed();
    changed_();
}

void VirtualSink::ensure(pw_core* core) {
    if (isPresent() || request_ != nullptr) return;
    // No node.group, with which the server crashed. No node.link-group, with which `wpctl status`
    // lists the device under "Filters". Without monitor volumes the monitor hears what was played,
    // whatever the sink's own volume and mute are. The lowest priorities: it becomes the default,
    // or drives the graph, only when asked to.
    pw_properties* properties = pw_properties_new(
        PW_KEY_FACTORY_NAME, "support.null-audio-sink", PW_KEY_NODE_NAME, kVirtualDeviceUID,
        PW_KEY_NODE_DESCRIPTION, kVirtualDeviceName, PW_KEY_MEDIA_CLASS, "Audio/Sink",
        "audio.position", "FL,FR", PW_KEY_OBJECT_LINGER, "true", "monitor.channel-volumes", "false",
        PW_KEY_PRIORITY_SESSION, "0", PW_KEY_PRIORITY_DRIVER, "1", PW_KEY_NODE_VIRTUAL, "true",
        "node.param.Props", "{ channelVolumes = [ 1.0 1.0 ] }", nullptr);
    request_ = static_cast<pw_proxy*>(pw_core_create_object(core, "adapter", PW_TYPE_INTERFACE_Node,
                                                            PW_VERSION_NODE, &properties->dict, 0));
    pw_properties_free(properties);
}

void VirtualSink::requestFailed() {
    if (request_ != nullptr) pw_proxy_destroy(std::exchange(request_, nullptr));
}

bool VirtualSink::isRequest(std::uint32_t proxyId) const {
    return request_ != nullptr && pw_proxy_get_id(request_) == proxyId;
}

} // namespace halvo::driver
