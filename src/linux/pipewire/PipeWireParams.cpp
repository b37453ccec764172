#include "linux/pipewire/PipeWireParams.h"

#include "linux/pipewire/PipeWireHandles.h"

#include <array>
#include <spa/param/audio/raw.h>
#include <spa/param/props.h>
#include <spa/param/route.h>
#include <spa/pod/builder.h>
#include <spa/pod/parser.h>

namespace halvo {

namespace {

using Storage = std::array<std::uint8_t, 2048>;

void addLevel(spa_pod_builder& builder, const LevelUpdate& update) {
    if (update.muted) {
        spa_pod_builder_prop(&builder, SPA_PROP_mute, 0);
        spa_pod_builder_bool(&builder, *update.muted);
    }
    if (update.channelVolumes) {
        const auto& volumes = *update.channelVolumes;
        spa_pod_builder_prop(&builder, SPA_PROP_channelVolumes, 0);
        spa_pod_builder_array(&builder, sizeof(float), SPA_TYPE_Float,
                              static_cast<std::uint32_t>(volumes.size()), volumes.data());
    }
}

const spa_pod* finish(spa_pod_builder& builder, spa_pod_frame& frame) {
    return static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &frame));
}

} // namespace

LevelUpdate readProps(const spa_pod& props) {
    LevelUpdate update;
    if (const auto* mute = spa_pod_find_prop(&props, nullptr, SPA_PROP_mute)) {
        bool muted = false;
        if (spa_pod_get_bool(&mute->value, &muted) == 0) update.muted = muted;
    }
    if (const auto* volumes = spa_pod_find_prop(&props, nullptr, SPA_PROP_channelVolumes)) {
        std::array<float, SPA_AUDIO_MAX_CHANNELS> values{};
        const auto count = spa_pod_copy_array(&volumes->value, SPA_TYPE_Float, values.data(),
                                              static_cast<std::uint32_t>(values.size()));
        if (count > 0) update.channelVolumes.emplace(values.begin(), values.begin() + count);
    }
    return update;
}

std::optional<CardRoute> readRoute(const spa_pod& route) {
    CardRoute result;
    std::uint32_t direction = 0;
    const char* name = nullptr;
    const spa_pod* props = nullptr;
    if (spa_pod_parse_object(
            &route, SPA_TYPE_OBJECT_ParamRoute, nullptr, SPA_PARAM_ROUTE_index,
            SPA_POD_Int(&result.index), SPA_PARAM_ROUTE_direction, SPA_POD_Id(&direction),
            SPA_PARAM_ROUTE_device, SPA_POD_Int(&result.profileDevice), SPA_PARAM_ROUTE_name,
            SPA_POD_OPT_String(&name), SPA_PARAM_ROUTE_props, SPA_POD_OPT_Pod(&props)) < 0) {
        return std::nullopt;
    }
    result.isOutput = direction == SPA_DIRECTION_OUTPUT;
    if (name) result.name = name;
    if (props) result.level = readProps(*props);
    return result;
}

bool writeProps(pw_node& node, const LevelUpdate& update) {
    Storage storage;
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, storage.data(), storage.size());
    spa_pod_frame frame{};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_Props, SPA_PARAM_Props);
    addLevel(builder, update);
    return pw_node_set_param(&node, SPA_PARAM_Props, 0, finish(builder, frame)) >= 0;
}

bool writeRoute(pw_device& card, const CardRoute& route, const LevelUpdate& update,
                LevelPersistence persistence) {
    Storage storage;
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, storage.data(), storage.size());
    spa_pod_frame frame{};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_ParamRoute, SPA_PARAM_Route);
    spa_pod_builder_prop(&builder, SPA_PARAM_ROUTE_index, 0);
    spa_pod_builder_int(&builder, route.index);
    spa_pod_builder_prop(&builder, SPA_PARAM_ROUTE_device, 0);
    spa_pod_builder_int(&builder, route.profileDevice);
    spa_pod_builder_prop(&builder, SPA_PARAM_ROUTE_props, 0);
    spa_pod_frame props{};
    spa_pod_builder_push_object(&builder, &props, SPA_TYPE_OBJECT_Props, SPA_PARAM_Route);
    addLevel(builder, update);
    spa_pod_builder_pop(&builder, &props);
    spa_pod_builder_prop(&builder, SPA_PARAM_ROUTE_save, 0);
    spa_pod_builder_bool(&builder, persistence == LevelPersistence::saved);
    return pw_device_set_param(&card, SPA_PARAM_Route, 0, finish(builder, frame)) >= 0;
}

} // namespace halvo
