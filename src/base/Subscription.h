#pragma once

#include <functional>
#include <utility>

namespace halvo {

/// Keeps a registration alive; destroying or cancelling it ends the registration. Main thread only.
/// May outlive the object that created it.
class [[nodiscard]] Subscription {
  public:
    Subscription() = default;
    explicit Subscription(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
    ~Subscription() { cancel(); }

    Subscription(Subscription&& other) noexcept : cancel_(std::exchange(other.cancel_, nullptr)) {}
    Subscription& operator=(Subscription&& other) noexcept {
        if (this != &other) {
            cancel();
            cancel_ = std::exchange(other.cancel_, nullptr);
        }
        return *this;
    }
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;

    /// Ends the registration now. Calling it again does nothing.
    void cancel() {
        if (auto end = std::exchange(cancel_, nullptr)) end();
    }

  private:
    std::function<void()> cancel_;
};

} // namespace halvo
