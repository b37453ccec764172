#include "StatusWatch.h"

#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusReply>

#include <algorithm>
#include <chrono>
#include <utility>

namespace halvo::demo {

namespace {

const QString kConnectionName = QStringLiteral("halvo-demo-status");
constexpr std::chrono::milliseconds kInterval{50};

} // namespace

StatusWatch::StatusWatch(std::string busSocket)
    : thread_([this, socket = std::move(busSocket)] { watch(socket); }) {}

StatusWatch::Seen StatusWatch::finish() {
    done_.store(true);
    if (thread_.joinable()) thread_.join();
    return seen_;
}

void StatusWatch::watch(const std::string& busSocket) {
    {
        const auto bus = QDBusConnection::connectToBus(
            QString::fromStdString("unix:path=" + busSocket), kConnectionName);
        QDBusInterface status(QStringLiteral("org.halvo.Halvo"),
                              QStringLiteral("/org/halvo/Halvo/Status"),
                              QStringLiteral("org.halvo.Status"), bus);
        while (!done_.load()) {
            const QDBusReply<QString> preset = status.call(QStringLiteral("ActivePreset"));
            const QDBusReply<QList<double>> levels = status.call(QStringLiteral("BandLevels"));
            if (preset.isValid()) seen_.activePreset = preset.value().toStdString();
            const auto count = levels.isValid() ? levels.value().size() : 0;
            for (int band = 0; band < std::min<int>(static_cast<int>(count), 10); ++band) {
                auto& highest = seen_.highestLevels[static_cast<std::size_t>(band)];
                highest = std::max(highest, levels.value()[band]);
            }
            std::this_thread::sleep_for(kInterval);
        }
    }
    QDBusConnection::disconnectFromBus(kConnectionName);
}

} // namespace halvo::demo
