#include "macos/MacMediaHelper.h"

#include "macos/MacBundle.h"

namespace halvo {

std::optional<std::string> MacMediaHelper::resourceFolder() const {
    const auto folder = MacBundle::resourceFolder();
    return folder ? std::optional(folder->string()) : std::nullopt;
}

} // namespace halvo
