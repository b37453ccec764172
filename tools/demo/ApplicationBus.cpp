#include "ApplicationBus.h"

#include <QDBusMessage>
#include <QDBusReply>
#include <QUuid>

#include <algorithm>

namespace halvo::demo {
namespace {

QDBusMessage call(const QDBusConnection& bus, const char* object, const char* method,
                  const QVariantList& arguments = {}) {
    constexpr int kPatienceMs = 5000;
    const QString name = QString::fromLatin1(method);
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.halvo.Halvo"), QString::fromLatin1(object),
        name.section(QLatin1Char('.'), 0, -2), name.section(QLatin1Char('.'), -1));
    message.setArguments(arguments);
    return bus.call(message, QDBus::Block, kPatienceMs);
}

constexpr const char* kStatus = "/org/halvo/Halvo/Status";

} // namespace

ApplicationBus::ApplicationBus(const std::string& busSocket)
    : bus_(QDBusConnection::connectToBus(QString::fromStdString("unix:path=" + busSocket),
                                         QUuid::createUuid().toString())) {}

ApplicationBus::~ApplicationBus() {
    QDBusConnection::disconnectFromBus(bus_.name());
}

std::optional<std::string> ApplicationBus::requestQuit() const {
    const QDBusMessage reply =
        call(bus_, "/org/halvo/Halvo", "org.freedesktop.Application.ActivateAction",
             {QStringLiteral("quit"), QVariantList(), QVariantMap()});
    if (reply.type() != QDBusMessage::ErrorMessage) return std::nullopt;
    return reply.errorMessage().toStdString();
}

std::string ApplicationBus::activePreset() const {
    const QDBusReply<QString> name = call(bus_, kStatus, "org.halvo.Status.ActivePreset");
    return name.value().toStdString();
}

std::array<double, 10> ApplicationBus::bandLevels() const {
    const QDBusReply<QList<double>> levels = call(bus_, kStatus, "org.halvo.Status.BandLevels");
    std::array<double, 10> result{};
    if (levels.value().size() == 10) std::ranges::copy(levels.value(), result.begin());
    return result;
}

} // namespace halvo::demo
