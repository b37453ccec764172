#pragma once

#include "ui/SystemAppearance.h"

#include <functional>
#include <memory>

namespace halvo {

/// Light or dark and the accent, as the person set them for the system. Main thread only.
class MacAppearance {
  public:
    /// `changed` runs whenever one of them is another.
    explicit MacAppearance(std::function<void()> changed);
    ~MacAppearance();

    SystemAppearance appearance() const;

  private:
    struct Observer;

    std::unique_ptr<Observer> observer_;
};

} // namespace halvo
