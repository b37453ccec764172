#include "qt/ConsoleAlert.h"

#include <cstdio>

namespace halvo {

std::size_t ConsoleAlert::runModal(AlertStyle /*style*/, const std::string& message,
                                   const std::string& informativeText,
                                   const std::vector<std::string>& buttons) {
    (void)std::fprintf(stderr, "%s\n%s\n", message.c_str(), informativeText.c_str());
    return buttons.empty() ? 0 : buttons.size() - 1;
}

} // namespace halvo
