#include "platform/linux/StatusService.h"

#include <QDBusConnection>

namespace halvo {

StatusService::StatusService() {
    if (!qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return;
    QDBusConnection::sessionBus().registerObject(QStringLiteral("/org/halvo/Halvo/Status"), this,
                                                 QDBusConnection::ExportScriptableSlots);
}

void StatusService::setActivePreset(const std::string& name) {
    activePreset_ = QString::fromStdString(name);
}

void StatusService::setBandLevels(std::span<const float> levels) {
    bandLevels_.clear();
    for (const float level : levels)
        bandLevels_.append(static_cast<double>(level));
}

} // namespace halvo
