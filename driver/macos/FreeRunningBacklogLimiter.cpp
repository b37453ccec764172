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
        // The reader may have read several times between two of the writer's cycles: an estimate
        // that is too long does no harm.
        longestRead_ = std::max(longestRead_, indices.read - lastRead_);
    }
    begun_ = true;
    lastRead_ = indices.read;

    const std::uint64_t backlog =
        indices.write > indices.read ? indices.write - indices.read : std::uint64_t{0};
    unread_ = moved || backlog == 0 ? 0 : unread_ + frames;
    const std::uint64_t limit = longestRead_ + 2 * std::uint64_t{frames};
    if (longestRead_ == 0 || backlog <= limit) return true;
    if (unread_ > 2 * limit) return false;
    const float* const end = samples + frames * kChannels;
    return std::find_if(samples, end, [](float sample) { return sample != 0.0F; }) != end;
}

} // namespace halvo::driver
