#include "QuitRequest.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>

namespace halvo::demo {

std::optional<std::string> requestQuit(const std::string& busSocket) {
    constexpr const char* kConnectionName = "halvo-demo";
    std::optional<std::string> failure;
    {
        QDBusConnection bus = QDBusConnection::connectToBus(
            QString::fromStdString("unix:path=" + busSocket), QString::fromLatin1(kConnectionName));
        QDBusMessage message = QDBusMessage::createMethodCall(
            QStringLiteral("org.halvo.Halvo"), QStringLiteral("/org/halvo/Halvo"),
            QStringLiteral("org.freedesktop.Application"), QStringLiteral("ActivateAction"));
        message << QStringLiteral("quit") << QVariantList() << QVariantMap();
        constexpr int kPatienceMs = 5000;
        const QDBusMessage reply = bus.call(message, QDBus::Block, kPatienceMs);
        if (reply.type() == QDBusMessage::ErrorMessage)
            failure = reply.errorMessage().toStdString();
    }
    QDBusConnection::disconnectFromBus(QString::fromLatin1(kConnectionName));
    return failure;
}

} // namespace halvo::demo
