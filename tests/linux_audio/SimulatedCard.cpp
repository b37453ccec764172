#include "linux_audio/SimulatedCard.h"

#include "base/NumberText.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <spa/monitor/utils.h>
#include <spa/param/profile.h>
#include <spa/param/props.h>
#include <spa/param/route.h>
#include <spa/pod/builder.h>
#include <spa/pod/parser.h>
#include <utility>

namespace halvo {

/// One entry of the card's list of routes.
struct SimulatedCard::Route {
    int index = 0;
    int profileDevice = 0;
    spa_direction direction = SPA_DIRECTION_OUTPUT;
    std::string name = kPort;
    std::optional<DeviceLevel> level = std::nullopt;
    bool isAvailable = true;
    int profile = 0;
};

namespace {

/// Around the one port of a card that is not managed: what a reader must not take for it.
constexpr int kFirstManagedIndex = 10;
constexpr int kPortsPerProfile = 10;
const DeviceLevel kDecoyLevel{{0.9F, 0.9F}};

void addInts(spa_pod_builder& builder, std::uint32_t key, int value) {
    spa_pod_builder_prop(&builder, key, 0);
    spa_pod_builder_array(&builder, sizeof(int), SPA_TYPE_Int, 1, &value);
}

void addLevel(spa_pod_builder& builder, const DeviceLevel& level) {
    const auto& volumes = level.channelVolumes;
    spa_pod_builder_prop(&builder, SPA_PARAM_ROUTE_props, 0);
    spa_pod_frame props{};
    spa_pod_builder_push_object(&builder, &props, SPA_TYPE_OBJECT_Props, SPA_PARAM_Route);
    spa_pod_builder_add(&builder, SPA_PROP_mute, SPA_POD_Bool(level.muted), SPA_PROP_channelVolumes,
                        SPA_POD_Array(sizeof(float), SPA_TYPE_Float,
                                      static_cast<std::uint32_t>(volumes.size()), volumes.data()),
                        0);
    spa_pod_builder_pop(&builder, &props);
}

spa_pod* buildProfile(spa_pod_builder& builder, int index, const std::string& name,
                      int profileDevice) {
    spa_pod_frame frame{};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_ParamProfile, SPA_PARAM_Profile);
    spa_pod_builder_add(&builder, SPA_PARAM_PROFILE_index, SPA_POD_Int(index),
                        SPA_PARAM_PROFILE_name, SPA_POD_String(name.c_str()), 0);
    spa_pod_builder_prop(&builder, SPA_PARAM_PROFILE_classes, 0);
    spa_pod_frame classes{};
    spa_pod_builder_push_struct(&builder, &classes);
    spa_pod_builder_int(&builder, 1);
    spa_pod_builder_add_struct(&builder, SPA_POD_String("Audio/Sink"), SPA_POD_Int(1),
                               SPA_POD_String("card.profile.devices"),
                               SPA_POD_Array(sizeof(int), SPA_TYPE_Int, 1, &profileDevice));
    spa_pod_builder_pop(&builder, &classes);
    return static_cast<spa_pod*>(spa_pod_builder_pop(&builder, &frame));
}

std::vector<float> fitted(const std::vector<float>& volumes, std::size_t channels) {
    std::vector<float> result(channels);
    for (std::size_t i = 0; i < channels; ++i)
        result[i] = volumes[i % volumes.size()];
    return result;
}

std::string volumeList(const std::vector<float>& volumes) {
    std::string list;
    for (const float volume : volumes)
        list += numberText(volume) + " ";
    return "{ channelVolumes = [ " + list + "] }";
}

} // namespace

SimulatedCard::SimulatedCard(const std::string& server, const std::string& sinkName,
                             const DeviceLevel& level)
    : SimulatedCard(server, sinkName, {}, level) {}

SimulatedCard::SimulatedCard(const std::string& server, const std::string& sinkName,
                             std::vector<Profile> profiles)
    : SimulatedCard(server, sinkName, std::move(profiles), {{1, 1}}) {}

SimulatedCard::SimulatedCard(const std::string& server, const std::string& sinkName,
                             std::vector<Profile> profiles, const DeviceLevel& level)
    : sinkName_(sinkName), profiles_(std::move(profiles)), level_(level) {
    params_[0].id = SPA_PARAM_Route;
    params_[0].flags = SPA_PARAM_INFO_READWRITE;
    params_[1].id = SPA_PARAM_EnumRoute;
    params_[1].flags = SPA_PARAM_INFO_READ;
    params_[2].id = SPA_PARAM_Profile;
    params_[2].flags = SPA_PARAM_INFO_READ;
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
            static_cast<SimulatedCard*>(self)->card_ = card;
            static_cast<SimulatedCard*>(self)->createSink();
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

void SimulatedCard::createSink() {
    const auto cardID = std::to_string(card_);
    const auto active = activeRoutes();
    const auto channels = isManaged() ? profiles_[profile_].channels : 2;
    const auto volumes = isManaged() ? volumeList(level_.channelVolumes) : volumeList({1, 1});
    const auto profileDevice =
        std::to_string(isManaged() ? active[0].profileDevice : int{kProfileDevice});
    const auto rate = std::to_string(isManaged() ? profiles_[profile_].rate : 48000);
    const spa_dict_item items[] = {{"factory.name", "support.null-audio-sink"},
                                   {PW_KEY_NODE_NAME, sinkName_.c_str()},
                                   {PW_KEY_MEDIA_CLASS, "Audio/Sink"},
                                   {"audio.position", channels == 1 ? "MONO" : "FL,FR"},
                                   {"audio.rate", rate.c_str()},
                                   {"monitor.channel-volumes", "true"},
                                   {"priority.session", isManaged() ? "3000" : "0"},
                                   {"node.param.Props", volumes.c_str()},
                                   {PW_KEY_DEVICE_ID, cardID.c_str()},
                                   {"card.profile.device", profileDevice.c_str()}};
    const spa_dict properties{0, std::size(items), items};
    sink_.reset(static_cast<pw_proxy*>(pw_core_create_object(
        core_, "adapter", PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, &properties, 0)));
    EXPECT_TRUE(sink_);
}

void SimulatedCard::turn(const DeviceLevel& level, bool isSaved) {
    pw_thread_loop_lock(loop_);
    {
        const std::lock_guard guard(mutex_);
        level_ = level;
        isSaved_ = isSaved;
    }
    reportLevel();
    pw_thread_loop_unlock(loop_);
}

void SimulatedCard::setAvailable(const std::string& port, bool isAvailable) {
    pw_thread_loop_lock(loop_);
    for (auto& candidate : profiles_[profile_].ports) {
        if (candidate.name == port) candidate.isAvailable = isAvailable;
    }
    report({SPA_PARAM_EnumRoute, SPA_PARAM_Route});
    pw_thread_loop_unlock(loop_);
}

void SimulatedCard::switchPort(const std::string& port) {
    pw_thread_loop_lock(loop_);
    {
        const std::lock_guard guard(mutex_);
        const auto& ports = profiles_[profile_].ports;
        port_ =
            static_cast<std::size_t>(std::ranges::find(ports, port, &Port::name) - ports.begin());
        isSaved_ = true;
    }
    report({SPA_PARAM_Route});
    pw_thread_loop_unlock(loop_);
}

void SimulatedCard::switchProfile(const std::string& name) {
    pw_thread_loop_lock(loop_);
    sink_.reset();
    {
        const std::lock_guard guard(mutex_);
        profile_ = static_cast<std::size_t>(std::ranges::find(profiles_, name, &Profile::name) -
                                            profiles_.begin());
        port_ = 0;
        isSaved_ = false;
        level_ = {std::vector<float>(profiles_[profile_].channels, 1.0F)};
    }
    report({SPA_PARAM_EnumRoute, SPA_PARAM_Route, SPA_PARAM_Profile});
    createSink();
    pw_thread_loop_unlock(loop_);
}

DeviceLevel SimulatedCard::level() {
    const std::lock_guard guard(mutex_);
    auto level = level_;
    level.port = isManaged() ? profiles_[profile_].ports[port_].name : kPort;
    return level;
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
            self->report({});
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

void SimulatedCard::report(std::initializer_list<std::uint32_t> changed) {
    for (auto& param : params_) {
        // A changed flag makes the server query the parameter again.
        if (std::ranges::find(changed, param.id) != changed.end()) {
            param.flags ^= SPA_PARAM_INFO_SERIAL;
        }
    }
    spa_device_info info{};
    info.change_mask = SPA_DEVICE_CHANGE_MASK_PARAMS;
    info.params = params_.data();
    info.n_params = isManaged() ? static_cast<std::uint32_t>(params_.size()) : 1;
    spa_device_emit_info(&listeners_, &info);
}

void SimulatedCard::reportLevel() {
    // First what is heard, then what is said about it.
    const auto level = this->level();
    if (isManaged() && sink_) {
        (void)writeProps(reinterpret_cast<pw_node&>(*sink_), {level.channelVolumes, level.muted});
    }
    report({SPA_PARAM_Route});
}

std::vector<SimulatedCard::Route> SimulatedCard::allRoutes() const {
    std::vector<Route> routes;
    for (std::size_t profile = 0; profile < profiles_.size(); ++profile) {
        const auto number = static_cast<int>(profile);
        int index = kFirstManagedIndex + kPortsPerProfile * number;
        for (const auto& port : profiles_[profile].ports) {
            Route route{.index = index++, .profileDevice = number, .name = port.name};
            route.isAvailable = port.isAvailable;
            route.profile = number;
            routes.push_back(std::move(route));
        }
    }
    return routes;
}

std::vector<SimulatedCard::Route> SimulatedCard::activeRoutes() const {
    if (!isManaged()) {
        return {{.index = 1,
                 .profileDevice = kProfileDevice,
                 .direction = SPA_DIRECTION_INPUT,
                 .level = kDecoyLevel},
                {.index = 2, .profileDevice = kProfileDevice + 1, .level = kDecoyLevel},
                {.index = kRouteIndex, .profileDevice = kProfileDevice, .level = level_},
                {.index = 4, .profileDevice = kProfileDevice + 2}};
    }
    for (auto& route : allRoutes()) {
        const auto index = kFirstManagedIndex + kPortsPerProfile * static_cast<int>(profile_) +
                           static_cast<int>(port_);
        if (route.index != index) continue;
        route.level = level_;
        return {route};
    }
    return {};
}

spa_pod* SimulatedCard::buildRoute(spa_pod_builder& builder, std::uint32_t id,
                                   const Route& route) const {
    spa_pod_frame frame{};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_ParamRoute, id);
    spa_pod_builder_add(
        &builder, SPA_PARAM_ROUTE_index, SPA_POD_Int(route.index), SPA_PARAM_ROUTE_direction,
        SPA_POD_Id(route.direction), SPA_PARAM_ROUTE_name, SPA_POD_String(route.name.c_str()),
        SPA_PARAM_ROUTE_priority, SPA_POD_Int(route.index), SPA_PARAM_ROUTE_available,
        SPA_POD_Id(route.isAvailable ? SPA_PARAM_AVAILABILITY_yes : SPA_PARAM_AVAILABILITY_no), 0);
    if (isManaged()) {
        addInts(builder, SPA_PARAM_ROUTE_profiles, route.profile);
        addInts(builder, SPA_PARAM_ROUTE_devices, route.profileDevice);
    }
    if (id == SPA_PARAM_Route) {
        spa_pod_builder_add(&builder, SPA_PARAM_ROUTE_device, SPA_POD_Int(route.profileDevice),
                            SPA_PARAM_ROUTE_profile, SPA_POD_Int(route.profile),
                            SPA_PARAM_ROUTE_save, SPA_POD_Bool(isSaved_), 0);
        if (route.level) addLevel(builder, *route.level);
    }
    return static_cast<spa_pod*>(spa_pod_builder_pop(&builder, &frame));
}

int SimulatedCard::enumerate(int sequence, std::uint32_t id, std::uint32_t start,
                             std::uint32_t count) {
    const std::lock_guard guard(mutex_);
    const bool isProfile = id == SPA_PARAM_Profile && isManaged();
    std::vector<Route> routes;
    if (id == SPA_PARAM_Route) {
        routes = activeRoutes();
    } else if (id == SPA_PARAM_EnumRoute) {
        routes = allRoutes();
    } else if (!isProfile) {
        return -ENOENT;
    }
    const auto size = isProfile ? 1 : routes.size();
    for (std::uint32_t i = start; i < size && i - start < count; ++i) {
        std::array<std::uint8_t, 1024> storage;
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, storage.data(), storage.size());
        const auto number = static_cast<int>(profile_);
        spa_result_device_params result{};
        result.id = id;
        result.index = i;
        result.next = i + 1;
        result.param = isProfile ? buildProfile(builder, number, profiles_[profile_].name, number)
                                 : buildRoute(builder, id, routes[i]);
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
                             SPA_POD_OPT_Bool(&request.saved), SPA_PARAM_ROUTE_props,
                             SPA_POD_OPT_Pod(&props)) < 0) {
        return -EINVAL;
    }
    {
        const std::lock_guard guard(mutex_);
        requests_.push_back(request);
        const auto known = isManaged() ? allRoutes() : activeRoutes();
        const auto route = std::ranges::find_if(known, [&](const Route& candidate) {
            return candidate.index == request.index &&
                   candidate.profileDevice == request.profileDevice;
        });
        if (route == known.end() || (!isManaged() && request.index != kRouteIndex)) return -EINVAL;
        if (isManaged()) {
            if (route->profile != static_cast<int>(profile_)) return -EINVAL;
            port_ = static_cast<std::size_t>(request.index % kPortsPerProfile);
            isSaved_ = request.saved;
        }
        const auto update = props ? readProps(*props) : LevelUpdate{};
        if (update.channelVolumes) {
            level_.channelVolumes = fitted(*update.channelVolumes, level_.channelVolumes.size());
        }
        if (update.muted) level_.muted = *update.muted;
    }
    reportLevel();
    return 0;
}

} // namespace halvo
