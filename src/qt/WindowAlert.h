#pragma once

#include "platform/Alert.h"

namespace halvo {

/// Alerts as modal windows. Main thread only; needs the widgets' application object.
class WindowAlert final : public Alert {
  public:
    std::size_t runModal(AlertStyle style, const std::string& message,
                         const std::string& informativeText,
                         const std::vector<std::string>& buttons) override;
};

} // namespace halvo
