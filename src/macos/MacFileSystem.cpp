#include "macos/MacFileSystem.h"

#include <QStandardPaths>

namespace halvo {

std::optional<std::filesystem::path> MacFileSystem::applicationSupportDirectory() {
    const auto path = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (path.isEmpty()) return std::nullopt;
    return std::filesystem::path(path.toStdString());
}

} // namespace halvo
