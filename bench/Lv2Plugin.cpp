#include "Lv2Plugin.h"

#include <lilv/lilv.h>
#include <lv2/atom/atom.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/options/options.h>
#include <lv2/urid/urid.h>

#include <array>
#include <cmath>
#include <map>

namespace halvo::bench {
namespace {

struct Release {
    void operator()(LilvWorld* world) const { lilv_world_free(world); }
    void operator()(LilvNode* node) const { lilv_node_free(node); }
    void operator()(LilvInstance* instance) const {
        lilv_instance_deactivate(instance);
        lilv_instance_free(instance);
    }
};
using World = std::unique_ptr<LilvWorld, Release>;
using Node = std::unique_ptr<LilvNode, Release>;

/// The numbers that stand for addresses between a host and its plugins.
class AddressNumbers {
  public:
    LV2_URID number(const std::string& address) {
        const auto next = static_cast<LV2_URID>(numbers_.size() + 1);
        return numbers_.try_emplace(address, next).first->second;
    }
    static LV2_URID map(LV2_URID_Map_Handle self, const char* address) {
        return static_cast<AddressNumbers*>(self)->number(address);
    }

  private:
    std::map<std::string, LV2_URID> numbers_;
};

} // namespace

struct Lv2Plugin::Parts {
    World world{lilv_world_new()};
    AddressNumbers numbers;
    LV2_URID_Map map{&numbers, &AddressNumbers::map};
    std::int32_t largestBlock = 0;
    std::array<LV2_Options_Option, 2> options{};
    std::vector<float> controls; ///< one for each port
    std::vector<std::uint32_t> audioInputs;
    std::vector<std::uint32_t> audioOutputs;
    std::unique_ptr<LilvInstance, Release> instance;

    const LilvPlugin* find(const std::string& uri);
    std::string setControls(const LilvPlugin* plugin, const Lv2Request& request);
    bool instantiate(const LilvPlugin* plugin, double sampleRate);
    void connect(const LilvPlugin* plugin);
};

const LilvPlugin* Lv2Plugin::Parts::find(const std::string& uri) {
    lilv_world_load_all(world.get());
    const Node address(lilv_new_uri(world.get(), uri.c_str()));
    if (!address) return nullptr;
    return lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world.get()), address.get());
}

/// Fills the controls; the symbol of one that the plugin does not have, else nothing.
std::string Lv2Plugin::Parts::setControls(const LilvPlugin* plugin, const Lv2Request& request) {
    controls.resize(lilv_plugin_get_num_ports(plugin));
    lilv_plugin_get_port_ranges_float(plugin, nullptr, nullptr, controls.data());
    for (float& value : controls)
        if (std::isnan(value)) value = 0; // a port without a default
    for (const auto& [symbol, value] : request.controls) {
        const Node name(lilv_new_string(world.get(), symbol.c_str()));
        const LilvPort* port = lilv_plugin_get_port_by_symbol(plugin, name.get());
        if (port == nullptr) return symbol;
        controls[lilv_port_get_index(plugin, port)] = value;
    }
    return {};
}

bool Lv2Plugin::Parts::instantiate(const LilvPlugin* plugin, double sampleRate) {
    options[0] = {LV2_OPTIONS_INSTANCE,
                  0,
                  numbers.number(LV2_BUF_SIZE__maxBlockLength),
                  sizeof largestBlock,
                  numbers.number(LV2_ATOM__Int),
                  &largestBlock};
    const LV2_Feature mapping{LV2_URID__map, &map};
    const LV2_Feature choices{LV2_OPTIONS__options, options.data()};
    const LV2_Feature bounded{LV2_BUF_SIZE__boundedBlockLength, nullptr};
    const std::array<const LV2_Feature*, 4> features{&mapping, &choices, &bounded, nullptr};
    instance.reset(lilv_plugin_instantiate(plugin, sampleRate, features.data()));
    return instance != nullptr;
}

void Lv2Plugin::Parts::connect(const LilvPlugin* plugin) {
    const Node audio(lilv_new_uri(world.get(), LV2_CORE__AudioPort));
    const Node control(lilv_new_uri(world.get(), LV2_CORE__ControlPort));
    const Node input(lilv_new_uri(world.get(), LV2_CORE__InputPort));
    for (std::uint32_t index = 0; index < controls.size(); ++index) {
        const LilvPort* port = lilv_plugin_get_port_by_index(plugin, index);
        const bool isControl = lilv_port_is_a(plugin, port, control.get());
        lilv_instance_connect_port(instance.get(), index, isControl ? &controls[index] : nullptr);
        if (!lilv_port_is_a(plugin, port, audio.get())) continue;
        const bool isInput = lilv_port_is_a(plugin, port, input.get());
        (isInput ? audioInputs : audioOutputs).push_back(index);
    }
}

std::expected<std::unique_ptr<Lv2Plugin>, std::string>
Lv2Plugin::load(const Lv2Request& request, double sampleRate, std::uint32_t largestBlock) {
    auto parts = std::make_unique<Parts>();
    parts->largestBlock = static_cast<std::int32_t>(largestBlock);
    const LilvPlugin* plugin = parts->find(request.uri);
    if (plugin == nullptr) return std::unexpected("no plugin " + request.uri + " is installed");
    if (const auto unknown = parts->setControls(plugin, request); !unknown.empty())
        return std::unexpected(request.uri + " has no port " + unknown);
    if (!parts->instantiate(plugin, sampleRate))
        return std::unexpected(request.uri + " does not start");
    parts->connect(plugin);
    if (parts->audioInputs.size() != 2 || parts->audioOutputs.size() != 2)
        return std::unexpected(request.uri + " is not a stereo effect");
    lilv_instance_activate(parts->instance.get());
    return std::unique_ptr<Lv2Plugin>(new Lv2Plugin(std::move(parts)));
}

Lv2Plugin::Lv2Plugin(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}
Lv2Plugin::~Lv2Plugin() = default;

void Lv2Plugin::run(float* const* in, float* const* out, std::uint32_t frames) {
    LilvInstance* instance = parts_->instance.get();
    for (std::size_t channel = 0; channel < 2; ++channel) {
        lilv_instance_connect_port(instance, parts_->audioInputs[channel], in[channel]);
        lilv_instance_connect_port(instance, parts_->audioOutputs[channel], out[channel]);
    }
    lilv_instance_run(instance, frames);
}

} // namespace halvo::bench
