#include "driver/linux/CycleOrderLink.h"

#include <string>
#include <string_view>
#include <utility>

namespace halvo::driver {

namespace {

std::string_view value(const spa_dict& properties, const char* key) {
    const char* found = spa_dict_lookup(&properties, key);
    return found != nullptr ? found : "";
}

} // namespace

CycleOrderLink::~CycleOrderLink() {
    cut();
}

void CycleOrderLink::End::consider(std::uint32_t id, const char* type, const spa_dict& properties) {
    const std::string_view kind = type;
    if (kind == PW_TYPE_INTERFACE_Node && value(properties, PW_KEY_NODE_NAME) == nodeName) {
        node = id;
        port = SPA_ID_INVALID;
    }
    if (kind != PW_TYPE_INTERFACE_Port || port != SPA_ID_INVALID || node == SPA_ID_INVALID) return;
    if (value(properties, PW_KEY_NODE_ID) != std::to_string(node)) return;
    if (value(properties, PW_KEY_PORT_DIRECTION) == direction) port = id;
}

bool CycleOrderLink::End::forget(std::uint32_t id) {
    if (id == node)
        node = port = SPA_ID_INVALID;
    else if (id == port)
        port = SPA_ID_INVALID;
    else
        return false;
    return true;
}

void CycleOrderLink::consider(std::uint32_t id, const char* type, const spa_dict* properties) {
    if (properties == nullptr) return;
    writer_.consider(id, type, *properties);
    reader_.consider(id, type, *properties);
    update();
}

void CycleOrderLink::forget(std::uint32_t id) {
    if (writer_.forget(id) || reader_.forget(id)) update();
}

void CycleOrderLink::refused(std::uint32_t proxyId) {
    if (link_ != nullptr && pw_proxy_get_id(link_) == proxyId) cut();
}

void CycleOrderLink::update() {
    const bool same = linkedWriter_ == writer_.port && linkedReader_ == reader_.port;
    if (same) return;
    cut();
    linkedWriter_ = writer_.port;
    linkedReader_ = reader_.port;
    if (writer_.port == SPA_ID_INVALID || reader_.port == SPA_ID_INVALID) return;
    // Passive: it orders the nodes, but does not keep them running.
    pw_properties* properties = pw_properties_new(PW_KEY_LINK_PASSIVE, "true", nullptr);
    pw_properties_setf(properties, PW_KEY_LINK_OUTPUT_PORT, "%u", writer_.port);
    pw_properties_setf(properties, PW_KEY_LINK_INPUT_PORT, "%u", reader_.port);
    link_ = static_cast<pw_proxy*>(pw_core_create_object(
        core_, "link-factory", PW_TYPE_INTERFACE_Link, PW_VERSION_LINK, &properties->dict, 0));
    pw_properties_free(properties);
    made_.store(link_ != nullptr, std::memory_order_relaxed);
}

void CycleOrderLink::cut() {
    made_.store(false, std::memory_order_relaxed);
    if (link_ != nullptr) pw_proxy_destroy(std::exchange(link_, nullptr));
    linkedWriter_ = linkedReader_ = SPA_ID_INVALID;
}

} // namespace halvo::driver
