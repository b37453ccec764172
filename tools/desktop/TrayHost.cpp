#include "desktop/TrayHost.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QtEndian>

namespace halvo::desktop {

namespace {

const QString kWatcher = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString kWatcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString kItem = QStringLiteral("org.kde.StatusNotifierItem");
const QString kItemPath = QStringLiteral("/StatusNotifierItem");
const QString kAppearance = QStringLiteral("org.freedesktop.appearance");
const QString kScheme = QStringLiteral("color-scheme");

QDBusConnection bus() {
    return QDBusConnection::sessionBus();
}

QDBusMessage questionFor(const QString& item, const QString& property) {
    auto call = QDBusMessage::createMethodCall(
        item, kItemPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call.setArguments({kItem, property});
    return call;
}

} // namespace

TrayHost::TrayHost() {
    qDBusRegisterMetaType<NotifierPixmap>();
    qDBusRegisterMetaType<NotifierPixmaps>();
    bus().registerObject(kWatcherPath, this, QDBusConnection::ExportScriptableContents);
    appear();
}

TrayHost::~TrayHost() {
    disappear();
    bus().unregisterObject(kWatcherPath);
}

void TrayHost::appear() {
    bus().registerService(kWatcher);
}

void TrayHost::disappear() {
    bus().unregisterService(kWatcher);
    item_.clear();
    newIcons_ = 0;
}

void TrayHost::RegisterStatusNotifierItem(const QString& service) {
    item_ = service;
    bus().connect(item_, kItemPath, kItem, QStringLiteral("NewIcon"), this, SLOT(takeNewIcon()));
}

void TrayHost::takeNewIcon() {
    ++newIcons_;
    (void)bus().asyncCall(questionFor(item_, QStringLiteral("IconPixmap"))); // as if to draw it
}

NotifierPixmap TrayHost::pixmap() const {
    const auto answer = bus().call(questionFor(item_, QStringLiteral("IconPixmap")));
    if (answer.arguments().isEmpty()) return {};
    const auto value = answer.arguments().constFirst().value<QDBusVariant>().variant();
    const auto pixmaps = qdbus_cast<NotifierPixmaps>(value);
    return pixmaps.isEmpty() ? NotifierPixmap() : pixmaps.constFirst();
}

QImage TrayHost::icon() const {
    const auto shown = pixmap();
    QImage image(shown.width, shown.height, QImage::Format_ARGB32);
    if (shown.bytes.size() == image.sizeInBytes()) {
        qFromBigEndian<quint32>(shown.bytes.constData(), shown.bytes.size() / 4, image.bits());
    }
    return image;
}

void TrayHost::activate(int x, int y) {
    auto call = QDBusMessage::createMethodCall(item_, kItemPath, kItem, QStringLiteral("Activate"));
    call.setArguments({x, y});
    (void)bus().send(call);
}

void TrayHost::chooseMenuEntry(int id) {
    auto call = QDBusMessage::createMethodCall(item_, kItemPath + QStringLiteral("/Menu"),
                                               QStringLiteral("com.canonical.dbusmenu"),
                                               QStringLiteral("Event"));
    call.setArguments(
        {id, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(QString())), 0U});
    (void)bus().call(call);
}

AppearancePortal::AppearancePortal() {
    bus().registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), this,
                         QDBusConnection::ExportScriptableContents);
    bus().registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
}

void AppearancePortal::setDark(bool dark) {
    scheme_ = dark ? 1 : 2;
    Q_EMIT SettingChanged(kAppearance, kScheme, QDBusVariant(scheme_));
}

QDBusVariant AppearancePortal::Read(const QString& group, const QString& key) {
    const bool known = group == kAppearance && key == kScheme;
    return QDBusVariant(known ? QVariant(scheme_) : QVariant(QString()));
}

} // namespace halvo::desktop
