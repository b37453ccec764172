#include "linux/pipewire/PipeWireDefaults.h"

#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

namespace halvo {

namespace {

constexpr const char* kCurrent = "default.audio.sink";
constexpr const char* kConfigured = "default.configured.audio.sink";
constexpr const char* kType = "Spa:String:JSON";

std::optional<std::string> sinkName(const char* value) {
    const auto parsed = nlohmann::json::parse(value, nullptr, false);
    if (!parsed.is_object()) return std::nullopt;
    const auto name = parsed.find("name");
    if (name == parsed.end() || !name->is_string()) return std::nullopt;
    return name->get<std::string>();
}

} // namespace

PipeWireDefaults::PipeWireDefaults(pw_registry& registry, std::uint32_t globalID,
                                   std::function<void()> changed)
    : globalID_(globalID), changed_(std::move(changed)),
      proxy_(static_cast<pw_metadata*>(pw_registry_bind(
          &registry, globalID, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0))) {
    if (proxy_) pw_metadata_add_listener(proxy_.get(), hook_.get(), &events(), this);
}

PipeWireDefaults::~PipeWireDefaults() = default;

std::optional<std::string> PipeWireDefaults::current() const {
    const auto found = names_.find(kCurrent);
    return found == names_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::string> PipeWireDefaults::configured() const {
    const auto found = names_.find(kConfigured);
    return found == names_.end() ? std::nullopt : std::optional(found->second);
}

bool PipeWireDefaults::configure(const std::optional<std::string>& name) {
    if (!proxy_) return false;
    if (!name) {
        return pw_metadata_set_property(proxy_.get(), PW_ID_CORE, kConfigured, nullptr, nullptr) >=
               0;
    }
    const auto value = nlohmann::json{{"name", *name}}.dump(
        -1, ' ', false, nlohmann::json::error_handler_t::replace);
    return pw_metadata_set_property(proxy_.get(), PW_ID_CORE, kConfigured, kType, value.c_str()) >=
           0;
}

const pw_metadata_events& PipeWireDefaults::events() {
    static const pw_metadata_events events = [] {
        pw_metadata_events table{};
        table.version = PW_VERSION_METADATA_EVENTS;
        table.property = [](void* self, std::uint32_t subject, const char* key, const char*,
                            const char* value) {
            if (subject == PW_ID_CORE) {
                static_cast<PipeWireDefaults*>(self)->propertyChanged(key, value);
            }
            return 0;
        };
        return table;
    }();
    return events;
}

void PipeWireDefaults::propertyChanged(const char* key, const char* value) {
    if (!key) {
        names_.clear();
    } else if (const std::string_view name(key); name != kCurrent && name != kConfigured) {
        return;
    } else if (auto sink = value ? sinkName(value) : std::nullopt) {
        names_[key] = std::move(*sink);
    } else {
        names_.erase(key);
    }
    changed_();
}

} // namespace halvo
