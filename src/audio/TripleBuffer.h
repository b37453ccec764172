#pragma once

#include "base/Realtime.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <type_traits>

namespace halvo {

/// Hands whole values from one thread to another without a lock: the reader always sees the newest
/// complete value, never a mixture. One writer thread, one reader thread.
template <typename T> class TripleBuffer {
    static_assert(std::is_trivially_copyable_v<T>);

  public:
    explicit TripleBuffer(const T& initial) { slots_.fill(initial); }

    /// Writer thread.
    void write(const T& value) noexcept HALVO_REALTIME {
        slots_[back_] = value;
        const auto old =
            middle_.exchange(static_cast<std::uint8_t>(back_ | kFresh), std::memory_order_acq_rel);
        back_ = old & kIndexMask;
    }

    /// The newest value; stays valid and unchanged until the next call. Reader thread.
    const T& read() noexcept HALVO_REALTIME {
        if ((middle_.load(std::memory_order_relaxed) & kFresh) != 0) {
            front_ = middle_.exchange(front_, std::memory_order_acq_rel) & kIndexMask;
        }
        return slots_[front_];
    }

  private:
    static constexpr std::uint8_t kIndexMask = 3;
    static constexpr std::uint8_t kFresh = 4;

    std::array<T, 3> slots_;
    std::uint8_t back_ = 0;               // writer thread
    std::uint8_t front_ = 1;              // reader thread
    std::atomic<std::uint8_t> middle_{2}; // shared
};

} // namespace halvo
