#pragma once

#include "linux/desktop/StatusNotifierItem.h"

#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QImage>
#include <QObject>
#include <QString>

namespace halvo::desktop {

/// A system tray that draws nothing: watcher and host of status notifier items on the session bus,
/// for one item. Main thread of Qt.
class TrayHost final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered MEMBER hosted_)

  public:
    TrayHost();
    ~TrayHost() override;

    /// Owns the watcher's bus name or releases it, as a desktop shell does when it starts or ends.
    void appear();
    void disappear();
    bool hasItem() const { return !item_.isEmpty(); }
    int newIcons() const { return newIcons_; }

    /// The item's picture; null when it sends none. Waits for the answer.
    NotifierPixmap pixmap() const;
    QImage icon() const;
    /// Tells the item that it was clicked at this point of the screen; does not wait.
    void activate(int x, int y);
    /// Activates an entry of the item's menu, as a desktop does that draws menus itself.
    void chooseMenuEntry(int id);

  public Q_SLOTS:
    Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString& service);

  Q_SIGNALS:
    Q_SCRIPTABLE void StatusNotifierHostRegistered();

  private Q_SLOTS:
    void takeNewIcon();

  private:
    QString item_;
    bool hosted_ = true;
    int newIcons_ = 0;
};

/// The desktop portal's setting of a light or dark style.
class AppearancePortal final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

  public:
    AppearancePortal();
    void setDark(bool dark);

  public Q_SLOTS:
    Q_SCRIPTABLE QDBusVariant Read(const QString& group, const QString& key);

  Q_SIGNALS:
    Q_SCRIPTABLE void SettingChanged(const QString& group, const QString& key,
                                     const QDBusVariant& value);

  private:
    uint scheme_ = 2;
};

} // namespace halvo::desktop
