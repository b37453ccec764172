#pragma once

#include "platform/Alert.h"

namespace halvo {

/// Stands in for modal windows while the program has none: writes the message to standard error
/// and answers with the last button, as if the window had been closed.
class ConsoleAlert final : public Alert {
  public:
    std::size_t runModal(AlertStyle style, const std::string& message,
                         const std::string& informativeText,
                         const std::vector<std::string>& buttons) override;
};

} // namespace halvo
