#include "linux/pipewire/PipeWireCycleTrigger.h"

#include "linux/pipewire/PipeWireConnection.h"

namespace halvo {

namespace {

/// The name by which the driver finds the node.
constexpr const char* kNodeName = "halvo-cycle-trigger";

} // namespace

std::unique_ptr<PipeWireCycleTrigger> PipeWireCycleTrigger::create(PipeWireConnection& connection,
                                                                   Owner& owner) {
    auto* core = connection.core();
    if (!core) return nullptr;
    std::unique_ptr<PipeWireCycleTrigger> trigger(new PipeWireCycleTrigger(connection, owner));
    return trigger->connect(*core) ? std::move(trigger) : nullptr;
}

PipeWireCycleTrigger::~PipeWireCycleTrigger() {
    end();
    // The filter removes its listener itself, once no cycle runs it any more. Removed earlier, it
    // may be in use (0.3.65); removed by the render thread, the library waits there for itself
    // (1.4).
    filter_.reset();
    hook_.forget();
}

void PipeWireCycleTrigger::end() {
    if (!owner_.load(std::memory_order_relaxed)) return;
    pw_data_loop_invoke(
        connection_.dataLoop(),
        [](spa_loop*, bool, std::uint32_t, const void*, std::size_t, void* self) {
            static_cast<PipeWireCycleTrigger*>(self)->owner_.store(nullptr,
                                                                   std::memory_order_release);
            return 0;
        },
        0, nullptr, 0, true, this);
}

bool PipeWireCycleTrigger::connect(pw_core& core) {
    // Without a media class, no session manager links it and no mixer shows it.
    filter_.reset(pw_filter_new(
        &core, kNodeName,
        pw_properties_new(PW_KEY_NODE_NAME, kNodeName, PW_KEY_NODE_DESCRIPTION, "Halvo",
                          PW_KEY_NODE_GROUP, "halvo", PW_KEY_NODE_LINK_GROUP, "halvo",
                          PW_KEY_NODE_PASSIVE, "true", PW_KEY_NODE_AUTOCONNECT, "false", nullptr)));
    if (!filter_) return false;
    pw_filter_add_listener(filter_.get(), hook_.get(), &events(), this);
    port_ = pw_filter_add_port(filter_.get(), PW_DIRECTION_INPUT, PW_FILTER_PORT_FLAG_MAP_BUFFERS,
                               sizeof(void*),
                               pw_properties_new(PW_KEY_FORMAT_DSP, "32 bit float mono audio",
                                                 PW_KEY_PORT_NAME, "after", nullptr),
                               nullptr, 0);
    return port_ && pw_filter_connect(filter_.get(), PW_FILTER_FLAG_RT_PROCESS, nullptr, 0) >= 0;
}

const pw_filter_events& PipeWireCycleTrigger::events() {
    static const pw_filter_events events = [] {
        pw_filter_events table{};
        table.version = PW_VERSION_FILTER_EVENTS;
        table.state_changed = [](void* self, pw_filter_state, pw_filter_state state, const char*) {
            static_cast<PipeWireCycleTrigger*>(self)->stateChanged(state);
        };
        table.process = [](void* self, spa_io_position*) {
            static_cast<PipeWireCycleTrigger*>(self)->process();
        };
        return table;
    }();
    return events;
}

void PipeWireCycleTrigger::stateChanged(pw_filter_state state) {
    if (state == PW_FILTER_STATE_PAUSED || state == PW_FILTER_STATE_STREAMING) connected_ = true;
    if (state == PW_FILTER_STATE_ERROR || (connected_ && state == PW_FILTER_STATE_UNCONNECTED)) {
        if (auto* owner = owner_.load(std::memory_order_acquire)) owner->triggerFailed();
    }
}

void PipeWireCycleTrigger::process() noexcept {
    // The buffer is recycled unread; only its timing matters.
    if (auto* buffer = pw_filter_dequeue_buffer(port_)) pw_filter_queue_buffer(port_, buffer);
    if (auto* owner = owner_.load(std::memory_order_relaxed)) owner->cycleTriggered();
}

} // namespace halvo
