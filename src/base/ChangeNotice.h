#pragma once

#include "base/Published.h"
#include "base/Subscription.h"

#include <functional>
#include <utility>
#include <variant>

namespace halvo {

/// Notifies observers that an object has changed, without saying what. Main thread only.
class ChangeNotice {
  public:
    Subscription subscribe(std::function<void()> handler) {
        return signal_.didChange([handler = std::move(handler)](const auto&) { handler(); });
    }
    void send() { signal_.set({}); }

  private:
    Published<std::monostate> signal_;
};

} // namespace halvo
