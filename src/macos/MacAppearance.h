#pragma once

#include "ui/SystemAppearance.h"

#include <functional>
#include <memory>

namespace halvo {

/// The system's light or dark mode and accent colour. Main thread only.
class MacAppearance {
  public:
    /// `changed` runs whenever one of them changes.
    explicit MacAppearance(std::function<void()> changed);
    ~MacAppearance();

    SystemAppearance appearance() const;

  private:
    struct Observer;

    std::unique_ptr<Observer> observer_;
};

} // namespace halvo
