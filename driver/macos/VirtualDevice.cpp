#include "driver/macos/VirtualDevice.h"

#include "driver/macos/VolumeScale.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace halvo::driver {

namespace {

constexpr std::uint32_t kFirstRate = 48000;
// Until somebody sets it: the real output plays at full scale while this one is used.
constexpr float kFirstVolume = 0.25F;

} // namespace

VirtualDevice::VirtualDevice(std::string ringName, RingAccess access, Timebase timebase)
    : ringName_(std::move(ringName)), access_(access), rate_(kFirstRate), volume_(kFirstVolume),
      clock_(timebase) {
    ensureRing();
}

bool VirtualDevice::setRate(std::uint32_t rate, std::uint64_t hostTime) {
    if (std::ranges::find(kRates, rate) == kRates.end()) return false;
    const std::lock_guard lock(mutex_);
    rate_ = rate;
    clock_.start(hostTime, rate);
    if (owned_) owned_->publish(rate);
    return true;
}

void VirtualDevice::setVolume(float scalar) {
    volume_ = VolumeScale::clampedScalar(scalar);
}

bool VirtualDevice::startIO(std::uint64_t hostTime) {
    const std::lock_guard lock(mutex_);
    if (starts_ == std::numeric_limits<std::uint32_t>::max()) return false;
    if (starts_ == 0) {
        ensureRing();
        clock_.start(hostTime, rate_);
    }
    ++starts_;
    return true;
}

bool VirtualDevice::stopIO() {
    const std::lock_guard lock(mutex_);
    if (starts_ == 0) return false;
    --starts_;
    return true;
}

std::string VirtualDevice::ringProblem() {
    const std::lock_guard lock(mutex_);
    return problem_;
}

void VirtualDevice::ensureRing() {
    if (owned_ && owned_->isCurrent()) return;
    ring_ = nullptr;
    owned_.reset(); // first: its lock is this process's own
    auto opened = RingWriter::open(ringName_, access_);
    problem_ = opened ? std::string() : opened.error().detail;
    if (!opened) return; // silence, and another try at the next start
    owned_ = std::move(*opened);
    owned_->publish(rate_);
    ring_ = owned_.get();
}

void VirtualDevice::write(const float* samples, std::size_t frames) noexcept HALVO_REALTIME {
    RingWriter* const ring = ring_.load(std::memory_order_acquire);
    if (ring == nullptr || !streamActive_.load(std::memory_order_relaxed)) return;
    if (stride_.takes(samples, frames, ring->indices())) ring->write(samples, frames);
}

} // namespace halvo::driver
