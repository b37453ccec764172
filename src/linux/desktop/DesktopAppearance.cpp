#include "linux/desktop/DesktopAppearance.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QPalette>

#include <utility>

namespace halvo {

namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kSettings = QStringLiteral("org.freedesktop.portal.Settings");
const QString kGroup = QStringLiteral("org.freedesktop.appearance");
const QString kScheme = QStringLiteral("color-scheme");
const QString kAccent = QStringLiteral("accent-color");
constexpr uint kPrefersDark = 1;

/// Three components from 0 to 1; a component out of range means no accent.
std::optional<Color> readColor(const QVariant& value) {
    if (!value.canConvert<QDBusArgument>()) return std::nullopt;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QStringLiteral("(ddd)")) return std::nullopt;
    Color color;
    argument.beginStructure();
    argument >> color.red >> color.green >> color.blue;
    argument.endStructure();
    const auto isPart = [](double part) { return part >= 0 && part <= 1; };
    if (!isPart(color.red) || !isPart(color.green) || !isPart(color.blue)) return std::nullopt;
    return color;
}

/// The portal wraps the result of `Read` in one variant too many.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

DesktopAppearance::DesktopAppearance(std::function<void()> changed) : changed_(std::move(changed)) {
    const auto palette = QGuiApplication::palette();
    appearance_.dark = palette.color(QPalette::Window).lightness() <
                       palette.color(QPalette::WindowText).lightness();
    QDBusConnection::sessionBus().connect(kService, kPath, kSettings,
                                          QStringLiteral("SettingChanged"), this,
                                          SLOT(takeChange(QDBusMessage)));
    ask(kScheme);
    ask(kAccent);
}

void DesktopAppearance::ask(const QString& key) {
    auto call = QDBusMessage::createMethodCall(kService, kPath, kSettings, QStringLiteral("Read"));
    call.setArguments({kGroup, key});
    auto* reply = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(reply, &QDBusPendingCallWatcher::finished, this, [this, reply, key] {
        reply->deleteLater();
        const QDBusPendingReply<QDBusVariant> answer = *reply;
        if (answer.isValid()) takeSetting(kGroup, key, answer.value());
    });
}

void DesktopAppearance::takeChange(const QDBusMessage& message) {
    const auto values = message.arguments();
    if (values.size() != 3) return;
    takeSetting(values[0].toString(), values[1].toString(), values[2].value<QDBusVariant>());
}

void DesktopAppearance::takeSetting(const QString& group, const QString& key,
                                    const QDBusVariant& value) {
    if (group != kGroup) return;
    const QVariant plain = unwrapped(value.variant());
    if (key == kScheme) {
        dark_ = appearance_.dark = plain.toUInt() == kPrefersDark;
    } else if (key == kAccent) {
        appearance_.accent = readColor(plain);
    } else {
        return;
    }
    changed_();
}

} // namespace halvo
