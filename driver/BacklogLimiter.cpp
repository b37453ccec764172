#include "driver/BacklogLimiter.h"

#include <algorithm>

namespace halvo::driver {

namespace {

// One late cycle costs a delay until the next silence, but no sound.
constexpr unsigned kPatience = 2;
constexpr std::size_t kChannels = 2;

} // namespace

bool BacklogLimiter::takes(const float* samples, std::size_t frames, const Indices& indices,
                           Turn turn) noexcept HALVO_REALTIME {
    const bool moved = begun_ && indices.read != lastRead_;
    everRead_ = everRead_ || moved;
    begun_ = true;
    lastRead_ = indices.read;
    const std::uint64_t waiting =
        indices.write > indices.read ? indices.write - indices.read : std::uint64_t{0};
    missed_ = moved || waiting == 0 ? 0 : missed_ + 1;

    const std::uint64_t needed = turn == Turn::afterWriter ? 0 : frames;
    if (!everRead_ || frames == 0 || waiting < needed + frames) return true;
    if (missed_ >= kPatience) return false;
    const float* const end = samples + frames * kChannels;
    return std::find_if(samples, end, [](float sample) { return sample != 0.0F; }) != end;
}

} // namespace halvo::driver
