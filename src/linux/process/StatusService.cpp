#include "linux/process/StatusService.h"

#include <QDBusConnection>

#include <utility>

namespace halvo {

StatusService::StatusService(std::function<void()> asked) : asked_(std::move(asked)) {
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

QList<double> StatusService::BandLevels() const {
    asked_();
    return bandLevels_;
}

} // namespace halvo
