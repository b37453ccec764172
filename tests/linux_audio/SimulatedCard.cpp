#include "linux_audio/SimulatedCard.h"

#include <array>
#include <gtest/gtest.h>
#include <iterator>
#include <spa/monitor/utils.h>
#include <spa/param/props.h>
#include <spa/param/route.h>
#include <spa/pod/builder.h>
#include <spa/pod/parser.h>

namespace halvo {

namespace {

/// The routes in the server's order: decoys around the one that counts.
struct Entry {
    int index;
    int profileDevice;
    spa_direction direction;
    bool hasLevel;
};
constexpr std::array<Entry, 4> kEntries{{
    {1, SimulatedCard::kProfileDevice, SPA_DIRECTION_INPUT, true},
    {2, SimulatedCard::kProfileDevice + 1, SPA_DIRECTION_OUTPUT, true},
    {SimulatedCard::kRouteIndex, SimulatedCard::kProfileDevice, SPA_DIRECTION_OUTPUT, true},
    {4, SimulatedCard::kProfileDevice + 2, SPA_DIRECTION_OUTPUT, false},
}};

spa_pod* buildRoute(spa_pod_builder& builder, const Entry& entry, const DeviceLevel& level) {
    spa_pod_frame frame{};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_ParamRoute, SPA_PARAM_Route);
    spa_pod_builder_add(&builder, SPA_PARAM_ROUTE_index, SPA_POD_Int(entry.index),
                        SPA_PARAM_ROUTE_direction, SPA_POD_Id(entry.direction),
                        SPA_PARAM_ROUTE_device, SPA_POD_Int(entry.profileDevice),
                        SPA_PARAM_ROUTE_name, SPA_POD_String("line"), 0);
    if (entry.hasLevel) {
        const bool counts = entry.index == SimulatedCard::kRouteIndex;
        const auto volumes = counts ? level.channelVolumes : std::vector<float>{0.9F, 0.9F};
        spa_pod_builder_prop(&builder, SPA_PARAM_ROUTE_props, 0);
        spa_pod_frame props{};
        spa_pod_builder_push_object(&builder, &props, SPA_TYPE_OBJECT_Props, SPA_PARAM_Route);
        spa_pod_builder_add(
            &builder, SPA_PROP_mute, SPA_POD_Bool(counts && level.muted), SPA_PROP_channelVolumes,
            SPA_POD_Array(sizeof(float), SPA_TYPE_Float, static_cast<std::uint32_t>(volumes.size()),
                          volumes.data()),
            0);
        spa_pod_builder_pop(&builder, &props);
    }
    return static_cast<spa_pod*>(spa_pod_builder_pop(&builder, &frame));
}

} // namespace

SimulatedCard::SimulatedCard(const std::string& server, const std::string& sinkName,
                             const DeviceLevel& level)
    : sinkName_(sinkName), level_(level) {
    spa_hook_list_init(&listeners_);
    device_.iface.type = SPA_TYPE_INTERFACE_Device;
    device_.iface.version = SPA_VERSION_DEVICE;
    device_.iface.cb = {&methods(), this};
    pw_init(nullptr, nullptr);
    loop_ = pw_thread_loop_new("simulated-card", nullptr);
    context_ = pw_context_new(pw_thread_loop_get_loop(loop_),
                              pw_properties_new("module.rt", "false", nullptr), 0);
    core_ = pw_context_connect(context_,
                               pw_properties_new(PW_KEY_REMOTE_NAME, server.c_str(), nullptr), 0);
    EXPECT_NE(core_, nullptr);
    if (core_) exportCard();
    pw_thread_loop_start(loop_);
}

SimulatedCard::~SimulatedCard() {
    pw_thread_loop_stop(loop_);
    sink_.reset();
    exportedHook_.remove();
    exported_.reset();
    if (core_) pw_core_disconnect(core_);
    pw_context_destroy(context_);
    pw_thread_loop_destroy(loop_);
}

void SimulatedCard::exportCard() {
    static const pw_proxy_events events = [] {
        pw_proxy_events table{};
        table.version = PW_VERSION_PROXY_EVENTS;
        table.bound = [](void* self, std::uint32_t card) {
            static_cast<SimulatedCard*>(self)->createSink(card);
        };
        return table;
    }();
    const spa_dict_item items[] = {{PW_KEY_DEVICE_NAME, "card"},
                                   {PW_KEY_MEDIA_CLASS, "Audio/Device"}};
    const spa_dict properties{0, std::size(items), items};
    exported_.reset(pw_core_export(core_, SPA_TYPE_INTERFACE_Device, &properties, &device_, 0));
    EXPECT_TRUE(exported_);
    pw_proxy_add_listener(exported_.get(), exportedHook_.get(), &events, this);
}

void SimulatedCard::createSink(std::uint32_t card) {
    const auto cardID = std::to_string(card);
    const auto profileDevice = std::to_string(kProfileDevice);
    const spa_dict_item items[] = {{"factory.name", "support.null-audio-sink"},
                                   {PW_KEY_NODE_NAME, sinkName_.c_str()},
                                   {PW_KEY_MEDIA_CLASS, "Audio/Sink"},
                                   {"audio.position", "FL,FR"},
                                   {PW_KEY_DEVICE_ID, cardID.c_str()},
                                   {"card.profile.device", profileDevice.c_str()}};
    const spa_dict properties{0, std::size(items), items};
    sink_.reset(static_cast<pw_proxy*>(pw_core_create_object(
        core_, "adapter", PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, &properties, 0)));
    EXPECT_TRUE(sink_);
}

void SimulatedCard::turn(const DeviceLevel& level) {
    pw_thread_loop_lock(loop_);
    {
        const std::lock_guard guard(mutex_);
        level_ = level;
    }
    reportChange();
    pw_thread_loop_unlock(loop_);
}

DeviceLevel SimulatedCard::level() {
    const std::lock_guard guard(mutex_);
    return level_;
}

std::vector<SimulatedCard::Request> SimulatedCard::requests() {
    const std::lock_guard guard(mutex_);
    return requests_;
}

const spa_device_methods& SimulatedCard::methods() {
    static const spa_device_methods methods = [] {
        spa_device_methods table{};
        table.version = SPA_VERSION_DEVICE_METHODS;
        table.add_listener = [](void* object, spa_hook* listener, const spa_device_events* events,
                                void* data) {
            auto* self = static_cast<SimulatedCard*>(object);
            spa_hook_list save;
            spa_hook_list_isolate(&self->listeners_, &save, listener, events, data);
            self->reportChange();
            spa_hook_list_join(&self->listeners_, &save);
            return 0;
        };
        table.sync = [](void* object, int sequence) {
            auto* self = static_cast<SimulatedCard*>(object);
            spa_device_emit_result(&self->listeners_, sequence, 0, 0, nullptr);
            return 0;
        };
        table.enum_params = [](void* object, int sequence, std::uint32_t id, std::uint32_t start,
                               std::uint32_t count, const spa_pod*) {
            return static_cast<SimulatedCard*>(object)->enumerate(sequence, id, start, count);
        };
        table.set_param = [](void* object, std::uint32_t id, std::uint32_t, const spa_pod* param) {
            if (id != SPA_PARAM_Route || !param) return -ENOENT;
            return static_cast<SimulatedCard*>(object)->setRoute(*param);
        };
        return table;
    }();
    return methods;
}

void SimulatedCard::reportChange() {
    // A changed flag makes the server query the routes again.
    spa_param_info param{};
    param.id = SPA_PARAM_Route;
    param.flags = SPA_PARAM_INFO_READWRITE;
    if (++changes_ % 2 == 0) param.flags |= SPA_PARAM_INFO_SERIAL;
    spa_device_info info{};
    info.change_mask = SPA_DEVICE_CHANGE_MASK_PARAMS;
    info.params = &param;
    info.n_params = 1;
    spa_device_emit_info(&listeners_, &info);
}

int SimulatedCard::enumerate(int sequence, std::uint32_t id, std::uint32_t start,
                             std::uint32_t count) {
    if (id != SPA_PARAM_Route) return -ENOENT;
    const auto level = this->level();
    for (std::uint32_t i = start; i < kEntries.size() && i - start < count; ++i) {
        std::array<std::uint8_t, 1024> storage;
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, storage.data(), storage.size());
        spa_result_device_params result{};
        result.id = id;
        result.index = i;
        result.next = i + 1;
        result.param = buildRoute(builder, kEntries[i], level);
        spa_device_emit_result(&listeners_, sequence, 0, SPA_RESULT_TYPE_DEVICE_PARAMS, &result);
    }
    return 0;
}

int SimulatedCard::setRoute(const spa_pod& param) {
    Request request;
    const spa_pod* props = nullptr;
    if (spa_pod_parse_object(&param, SPA_TYPE_OBJECT_ParamRoute, nullptr, SPA_PARAM_ROUTE_index,
                             SPA_POD_Int(&request.index), SPA_PARAM_ROUTE_device,
                             SPA_POD_Int(&request.profileDevice), SPA_PARAM_ROUTE_save,
                             SPA_POD_Bool(&request.saved), SPA_PARAM_ROUTE_props,
                             SPA_POD_Pod(&props)) < 0) {
        return -EINVAL;
    }
    {
        const std::lock_guard guard(mutex_);
        requests_.push_back(request);
        if (request.index != kRouteIndex || request.profileDevice != kProfileDevice) return -EINVAL;
        const auto update = readProps(*props);
        if (update.channelVolumes) level_.channelVolumes = *update.channelVolumes;
        if (update.muted) level_.muted = *update.muted;
    }
    reportChange();
    return 0;
}

} // namespace halvo
