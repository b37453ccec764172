#include "linux/pipewire/PipeWireCard.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>

namespace halvo {

PipeWireCard::PipeWireCard(Owner& owner, pw_registry& registry, std::uint32_t globalID)
    : owner_(owner), globalID_(globalID),
      proxy_(static_cast<pw_device*>(
          pw_registry_bind(&registry, globalID, PW_TYPE_INTERFACE_Device, PW_VERSION_DEVICE, 0))) {
    if (!proxy_) return;
    auto* proxy = reinterpret_cast<pw_proxy*>(proxy_.get());
    pw_proxy_add_listener(proxy, proxyHook_.get(), &proxyEvents(), this);
    pw_device_add_listener(proxy_.get(), hook_.get(), &events(), this);
}

PipeWireCard::~PipeWireCard() = default;

const CardRoute* PipeWireCard::route(int profileDevice) const {
    const auto found = std::ranges::find_if(routes_, [profileDevice](const CardRoute& route) {
        return route.isOutput && route.profileDevice == profileDevice && route.level.channelVolumes;
    });
    return found == routes_.end() ? nullptr : &*found;
}

const pw_device_events& PipeWireCard::events() {
    static const pw_device_events events = [] {
        pw_device_events table{};
        table.version = PW_VERSION_DEVICE_EVENTS;
        table.info = [](void* self, const pw_device_info* info) {
            static_cast<PipeWireCard*>(self)->infoChanged(*info);
        };
        table.param = [](void* object, int sequence, std::uint32_t id, std::uint32_t, std::uint32_t,
                         const spa_pod* param) {
            auto* self = static_cast<PipeWireCard*>(object);
            // Replies to an earlier request may still arrive.
            if (id != SPA_PARAM_Route || !param || sequence != self->question_) return;
            if (auto route = readRoute(*param)) self->incoming_.push_back(std::move(*route));
        };
        return table;
    }();
    return events;
}

const pw_proxy_events& PipeWireCard::proxyEvents() {
    static const pw_proxy_events events = [] {
        pw_proxy_events table{};
        table.version = PW_VERSION_PROXY_EVENTS;
        table.done = [](void* self, int sequence) {
            static_cast<PipeWireCard*>(self)->roundTripDone(sequence);
        };
        return table;
    }();
    return events;
}

void PipeWireCard::infoChanged(const pw_device_info& info) {
    if (!(info.change_mask & PW_DEVICE_CHANGE_MASK_PARAMS)) return;
    // The list replaces the old one as a whole when it is complete.
    incoming_.clear();
    const std::span params(info.params, info.n_params);
    const bool hasRoutes = std::ranges::any_of(params, [](const spa_param_info& param) {
        return param.id == SPA_PARAM_Route && (param.flags & SPA_PARAM_INFO_READ);
    });
    if (hasRoutes) {
        question_ = pw_device_enum_params(proxy_.get(), 0, SPA_PARAM_Route, 0, UINT32_MAX, nullptr);
    }
    complete_ = pw_proxy_sync(reinterpret_cast<pw_proxy*>(proxy_.get()), 0);
}

void PipeWireCard::roundTripDone(int sequence) {
    if (sequence != complete_) return;
    routes_ = std::exchange(incoming_, {});
    known_ = true;
    owner_.cardChanged(*this);
}

} // namespace halvo
