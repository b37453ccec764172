#include "linux/pipewire/PipeWireSettling.h"

#include "linux/pipewire/PipeWireConnection.h"
#include "linux/pipewire/PipeWireHandles.h"
#include "linux/pipewire/PipeWireRenderer.h"

#include <utility>

namespace halvo {

namespace {

constexpr int kTicks = 50;
constexpr long kNanosecondsPerTick = 1'000'000'000 / kTicks;

} // namespace

PipeWireSettling::PipeWireSettling(PipeWireConnection& connection, PipeWireRenderer& renderer,
                                   const StreamFormat& format, std::function<void()> settled)
    : connection_(connection), renderer_(renderer),
      frames_(static_cast<std::uint32_t>(format.sampleRate / kTicks)), settled_(std::move(settled)),
      timer_(pw_loop_add_timer(
          connection.loop(),
          [](void* self, std::uint64_t) { static_cast<PipeWireSettling*>(self)->tick(); }, this)),
      nowhere_(std::size_t{frames_} * format.channels) {}

PipeWireSettling::~PipeWireSettling() {
    end();
    if (timer_) pw_loop_destroy_source(connection_.loop(), timer_);
    // Waits until the render thread has finished the work given to it.
    pw_data_loop_invoke(
        connection_.dataLoop(),
        [](spa_loop*, bool, std::uint32_t, const void*, std::size_t, void*) { return 0; }, 0,
        nullptr, 0, true, nullptr);
}

void PipeWireSettling::begin() {
    active_.store(true, std::memory_order_release);
    ticksLeft_ = kTicks;
    arm(true);
}

void PipeWireSettling::end() {
    active_.store(false, std::memory_order_release);
    arm(false);
}

void PipeWireSettling::arm(bool on) {
    const timespec period{0, on ? kNanosecondsPerTick : 0};
    if (timer_) {
        pw_loop_update_timer(connection_.loop(), timer_, const_cast<timespec*>(&period),
                             const_cast<timespec*>(&period), false);
    }
}

void PipeWireSettling::tick() {
    if (ticksLeft_-- <= 0) {
        end();
        settled_();
        return;
    }
    pw_data_loop_invoke(
        connection_.dataLoop(),
        [](spa_loop*, bool, std::uint32_t, const void*, std::size_t, void* data) {
            auto& self = *static_cast<PipeWireSettling*>(data);
            if (self.active_.load(std::memory_order_acquire)) {
                self.renderer_.renderToNowhere(self.nowhere_.data(), self.frames_);
            }
            return 0;
        },
        0, nullptr, 0, false, this);
}

} // namespace halvo
