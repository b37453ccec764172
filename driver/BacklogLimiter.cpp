#include "driver/BacklogLimiter.h"

#include <algorithm>

namespace halvo::driver {

namespace {

// After one missed block the reader may still come: that delays the sound, but loses none.
constexpr unsigned kMostMissed = 2;
constexpr std::size_t kChannels = 2;

} // namespace

bool BacklogLimiter::takes(const float* samples, std::size_t frames, const Indices& indices,
                           ReadOrder order) noexcept HALVO_REALTIME {
    const bool moved = begun_ && indices.read != lastRead_;
    everRead_ = everRead_ || moved;
    begun_ = true;
    lastRead_ = indices.read;
    const std::uint64_t backlog =
        indices.write > indices.read ? indices.write - indices.read : std::uint64_t{0};
    missed_ = moved || backlog == 0 ? 0 : missed_ + 1;

    const std::uint64_t needed = order == ReadOrder::afterWriter ? 0 : frames;
    if (!everRead_ || frames == 0 || backlog < needed + frames) return true;
    if (missed_ >= kMostMissed) return false;
    const float* const end = samples + frames * kChannels;
    return std::find_if(samples, end, [](float sample) { return sample != 0.0F; }) != end;
}

} // namespace halvo::driver
