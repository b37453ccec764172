#pragma once

#include <memory>

namespace halvo {

/// A member that lets callbacks notice that their object is gone. Main thread only.
///
///     queue.async([this, alive = lifetime_.watch()] { if (!alive.expired()) work(); });
class Lifetime {
  public:
    Lifetime() = default;
    Lifetime(const Lifetime&) = delete;
    Lifetime& operator=(const Lifetime&) = delete;

    std::weak_ptr<const void> watch() const { return token_; }

  private:
    std::shared_ptr<const void> token_ = std::make_shared<char>();
};

} // namespace halvo
