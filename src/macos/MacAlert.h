#pragma once

#include "platform/Alert.h"

namespace halvo {

/// The system's modal alerts, in front of all windows. Main thread only.
class MacAlert final : public Alert {
  public:
    std::size_t runModal(AlertStyle style, const std::string& message,
                         const std::string& informativeText,
                         const std::vector<std::string>& buttons) override;
};

} // namespace halvo
