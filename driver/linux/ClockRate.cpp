#include "driver/linux/ClockRate.h"

#include <charconv>
#include <cstring>
#include <string_view>
#include <utility>

namespace halvo::driver {

namespace {

constexpr std::uint32_t kStandardRate = 48000;

std::uint32_t number(const char* value) {
    const std::string_view text = value != nullptr ? value : "";
    std::uint32_t result = 0;
    (void)std::from_chars(text.data(), text.data() + text.size(), result); // not a number: 0
    return result;
}

} // namespace

ClockRate::ClockRate(std::function<void()> changed) : changed_(std::move(changed)) {}

ClockRate::~ClockRate() {
    if (settings_ == nullptr) return;
    spa_hook_remove(&listener_);
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(settings_));
}

void ClockRate::consider(pw_registry* registry, std::uint32_t id, const char* type,
                         const spa_dict* properties) {
    static const pw_metadata_events events = [] {
        pw_metadata_events result{};
        result.version = PW_VERSION_METADATA_EVENTS;
        result.property = onProperty;
        return result;
    }();
    if (settings_ != nullptr || std::strcmp(type, PW_TYPE_INTERFACE_Metadata) != 0) return;
    const char* name = spa_dict_lookup(properties, PW_KEY_METADATA_NAME);
    if (name == nullptr || std::strcmp(name, "settings") != 0) return;
    settings_ = static_cast<pw_metadata*>(
        pw_registry_bind(registry, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0));
    if (settings_ != nullptr) pw_metadata_add_listener(settings_, &listener_, &events, this);
}

std::uint32_t ClockRate::framesPerSecond() const {
    if (forcedRate_ != 0) return forcedRate_;
    return rate_ != 0 ? rate_ : kStandardRate;
}

int ClockRate::onProperty(void* data, std::uint32_t, const char* key, const char*,
                          const char* value) {
    auto* self = static_cast<ClockRate*>(data);
    if (key == nullptr) return 0;
    const std::uint32_t before = self->framesPerSecond();
    if (std::strcmp(key, "clock.rate") == 0) self->rate_ = number(value);
    if (std::strcmp(key, "clock.force-rate") == 0) self->forcedRate_ = number(value);
    if (self->framesPerSecond() != before) self->changed_();
    return 0;
}

} // namespace halvo::driver
