#pragma once

#include "base/Realtime.h"

#include <atomic>

namespace halvo {

/// One float that one thread writes and another reads; no order with other data. Real-time safe.
class AtomicFloat {
  public:
    float value() const noexcept HALVO_REALTIME { return cell_.load(std::memory_order_relaxed); }
    void set(float value) noexcept HALVO_REALTIME { cell_.store(value, std::memory_order_relaxed); }

  private:
    std::atomic<float> cell_{0};
    static_assert(std::atomic<float>::is_always_lock_free);
};

} // namespace halvo
