#include "driver/macos/FreeRunningBacklogLimiter.h"

#include <algorithm>

namespace halvo::driver {

namespace {

constexpr std::size_t kChannels = 2;

} // namespace

bool FreeRunningBacklogLimiter::takes(const float* samples, std::size_t frames,
                                      const BacklogLimiter::Indices& indices) noexcept
    HALVO_REALTIME {
    const bool moved = begun_ && indices.read != lastRead_;
    if (moved && indices.read > lastRead_ && indices.read - lastRead_ <= kLongest) {
        // Several reads may lie between two of the writer's cycles: too long is harmless.
        stride_ = std::max(stride_, indices.read - lastRead_);
    }
    begun_ = true;
    lastRead_ = indices.read;

    const std::uint64_t waiting =
        indices.write > indices.read ? indices.write - indices.read : std::uint64_t{0};
    unread_ = moved || waiting == 0 ? 0 : unread_ + frames;
    const std::uint64_t limit = stride_ + 2 * std::uint64_t{frames};
    if (stride_ == 0 || waiting <= limit) return true;
    if (unread_ > 2 * limit) return false;
    const float* const end = samples + frames * kChannels;
    return std::find_if(samples, end, [](float sample) { return sample != 0.0F; }) != end;
}

} // namespace halvo::driver
