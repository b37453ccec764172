#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace halvo {

enum class AlertStyle { informational, critical };

/// Modal messages. Main thread only; a call returns when the user has answered.
class Alert {
  public:
    virtual ~Alert() = default;

    /// Shows the message with its buttons, the default one first ("OK" alone when there are none),
    /// and returns the index of the chosen one; closing the window counts as the last one.
    virtual std::size_t runModal(AlertStyle style, const std::string& message,
                                 const std::string& informativeText,
                                 const std::vector<std::string>& buttons) = 0;
};

} // namespace halvo
