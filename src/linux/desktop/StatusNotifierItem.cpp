#include "linux/desktop/StatusNotifierItem.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QtEndian>

#include <utility>

namespace halvo {

namespace {

const QString kWatcher = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString kWatcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString kItemPath = QStringLiteral("/StatusNotifierItem");

QDBusMessage watcherCall(const QString& interface, const QString& method,
                         const QVariantList& arguments) {
    auto call = QDBusMessage::createMethodCall(kWatcher, kWatcherPath, interface, method);
    call.setArguments(arguments);
    call.setAutoStartService(false);
    return call;
}

} // namespace

NotifierPixmap NotifierPixmap::of(const QImage& straight) {
    NotifierPixmap result{straight.width(), straight.height(), {}};
    result.bytes.resize(straight.sizeInBytes());
    // Rows of 32-bit pixels have no padding.
    qToBigEndian<quint32>(straight.constBits(), straight.sizeInBytes() / 4, result.bytes.data());
    return result;
}

QDBusArgument& operator<<(QDBusArgument& argument, const NotifierPixmap& pixmap) {
    argument.beginStructure();
    argument << pixmap.width << pixmap.height << pixmap.bytes;
    argument.endStructure();
    return argument; // NOLINT(bugprone-return-const-ref-from-parameter): the toolkit asks for it
}

const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierPixmap& pixmap) {
    argument.beginStructure();
    argument >> pixmap.width >> pixmap.height >> pixmap.bytes;
    argument.endStructure();
    return argument; // NOLINT(bugprone-return-const-ref-from-parameter): the toolkit asks for it
}

QDBusArgument& operator<<(QDBusArgument& argument, const NotifierToolTip& toolTip) {
    argument.beginStructure();
    argument << toolTip.iconName << toolTip.pixmaps << toolTip.title << toolTip.text;
    argument.endStructure();
    return argument; // NOLINT(bugprone-return-const-ref-from-parameter): the toolkit asks for it
}

const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierToolTip& toolTip) {
    argument.beginStructure();
    argument >> toolTip.iconName >> toolTip.pixmaps >> toolTip.title >> toolTip.text;
    argument.endStructure();
    return argument; // NOLINT(bugprone-return-const-ref-from-parameter): the toolkit asks for it
}

StatusNotifierItem::StatusNotifierItem(const QDBusObjectPath& menu)
    : service_(QStringLiteral("org.kde.StatusNotifierItem-%1-1")
                   .arg(QCoreApplication::applicationPid())),
      menu_(menu) {
    qDBusRegisterMetaType<NotifierPixmap>();
    qDBusRegisterMetaType<NotifierPixmaps>();
    qDBusRegisterMetaType<NotifierToolTip>();
    auto bus = QDBusConnection::sessionBus();
    // The object first: clients that see the name expect it.
    bus.registerObject(kItemPath, this, QDBusConnection::ExportScriptableContents);
    bus.registerService(service_);
    watcher_.setConnection(bus);
    watcher_.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    watcher_.addWatchedService(kWatcher);
    connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& owner) {
                setShown(false, false);
                if (!owner.isEmpty()) registerItem();
            });
    for (const auto* signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        bus.connect(kWatcher, kWatcherPath, kWatcher, QString::fromLatin1(signal), this,
                    SLOT(askForHost()));
    }
    registerItem();
}

StatusNotifierItem::~StatusNotifierItem() {
    auto bus = QDBusConnection::sessionBus();
    bus.unregisterObject(kItemPath);
    bus.unregisterService(service_);
}

void StatusNotifierItem::registerItem() {
    const auto call =
        watcherCall(kWatcher, QStringLiteral("RegisterStatusNotifierItem"), {service_});
    auto* reply = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(reply, &QDBusPendingCallWatcher::finished, this, [this, reply] {
        reply->deleteLater();
        if (reply->isError()) return;
        setShown(true, hosted_);
        askForHost();
    });
}

void StatusNotifierItem::askForHost() {
    const auto call =
        watcherCall(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                    {kWatcher, QStringLiteral("IsStatusNotifierHostRegistered")});
    auto* reply = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(reply, &QDBusPendingCallWatcher::finished, this, [this, reply] {
        reply->deleteLater();
        const QDBusPendingReply<QDBusVariant> answer = *reply;
        setShown(watched_, answer.isValid() && answer.value().variant().toBool());
    });
}

void StatusNotifierItem::setShown(bool watched, bool hosted) {
    const bool before = isShown();
    watched_ = watched;
    hosted_ = hosted;
    if (isShown() != before && onShownChanged) onShownChanged();
}

void StatusNotifierItem::setPixmaps(NotifierPixmaps pixmaps) {
    pixmaps_ = std::move(pixmaps);
    Q_EMIT NewIcon();
}

void StatusNotifierItem::Activate(int x, int y) {
    if (onActivate) onActivate({x, y});
}

void StatusNotifierItem::SecondaryActivate(int x, int y) {
    Activate(x, y);
}

void StatusNotifierItem::ContextMenu(int x, int y) {
    if (onContextMenu) onContextMenu({x, y});
}

void StatusNotifierItem::Scroll(int /*delta*/, const QString& /*orientation*/) {}

} // namespace halvo
