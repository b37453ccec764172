#pragma once

#include <atomic>

namespace halvo {

/// Silences this program's own output while levels are moved underneath it. The main thread opens
/// and closes it; the render thread fades out within 5 ms when it is closed and in over 30 ms when
/// it opens. Fully open it leaves samples untouched, bit for bit.
class OutputGate {
  public:
    void open() { open_.store(true, std::memory_order_release); }
    void close() { open_.store(false, std::memory_order_release); }
    bool isOpen() const noexcept { return open_.load(std::memory_order_acquire); }

  private:
    std::atomic<bool> open_{true};
};

} // namespace halvo
