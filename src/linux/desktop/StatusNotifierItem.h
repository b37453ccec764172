#pragma once

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QImage>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>

namespace halvo {

/// A picture in D-Bus form: straight ARGB in network byte order.
struct NotifierPixmap {
    int width = 0;
    int height = 0;
    QByteArray bytes;

    static NotifierPixmap of(const QImage& straight);
    bool operator==(const NotifierPixmap&) const = default;
};
using NotifierPixmaps = QList<NotifierPixmap>;

struct NotifierToolTip {
    QString iconName;
    NotifierPixmaps pixmaps;
    QString title;
    QString text;

    bool operator==(const NotifierToolTip&) const = default;
};

QDBusArgument& operator<<(QDBusArgument& argument, const NotifierPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& argument, const NotifierToolTip& toolTip);
const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierToolTip& toolTip);

/// Halvo's item in the desktop's tray: interface org.kde.StatusNotifierItem on the session bus.
/// Registers whenever a watcher appears. Main thread only.
class StatusNotifierItem final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category MEMBER category_ CONSTANT)
    Q_PROPERTY(QString Id MEMBER id_ CONSTANT)
    Q_PROPERTY(QString Title MEMBER title_ CONSTANT)
    Q_PROPERTY(QString Status MEMBER status_ CONSTANT)
    Q_PROPERTY(int WindowId MEMBER windowId_ CONSTANT)
    Q_PROPERTY(QString IconName MEMBER iconName_ CONSTANT)
    Q_PROPERTY(halvo::NotifierPixmaps IconPixmap MEMBER pixmaps_ NOTIFY NewIcon)
    Q_PROPERTY(halvo::NotifierToolTip ToolTip MEMBER toolTip_ CONSTANT)
    Q_PROPERTY(bool ItemIsMenu MEMBER itemIsMenu_ CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu MEMBER menu_ CONSTANT)

  public:
    explicit StatusNotifierItem(const QDBusObjectPath& menu);
    ~StatusNotifierItem() override;

    /// Whether the desktop shows the item: there is a watcher with a host.
    bool isShown() const { return watched_ && hosted_; }
    bool hasWatcher() const { return watched_; }
    /// New pictures, the same in several sizes.
    void setPixmaps(NotifierPixmaps pixmaps);

    std::function<void()> onShownChanged;
    std::function<void(QPoint place)> onActivate; ///< place of the click on the screen
    std::function<void(QPoint place)> onContextMenu;

  public Q_SLOTS:
    Q_SCRIPTABLE void Activate(int x, int y);
    Q_SCRIPTABLE void SecondaryActivate(int x, int y);
    Q_SCRIPTABLE void ContextMenu(int x, int y);
    Q_SCRIPTABLE void Scroll(int delta, const QString& orientation);

  Q_SIGNALS:
    Q_SCRIPTABLE void NewIcon();

  private Q_SLOTS:
    void askForHost();

  private:
    void registerItem();
    void setShown(bool watched, bool hosted);

    QString service_;
    QDBusServiceWatcher watcher_;
    bool watched_ = false;
    bool hosted_ = false;

    QString category_ = QStringLiteral("ApplicationStatus");
    QString id_ = QStringLiteral("org.halvo.Halvo");
    QString title_ = QStringLiteral("Halvo");
    QString status_ = QStringLiteral("Active");
    int windowId_ = 0;
    QString iconName_;
    NotifierPixmaps pixmaps_;
    NotifierToolTip toolTip_{{}, {}, QStringLiteral("Halvo"), {}};
    bool itemIsMenu_ = false;
    QDBusObjectPath menu_;
};

} // namespace halvo

Q_DECLARE_METATYPE(halvo::NotifierPixmap)
Q_DECLARE_METATYPE(halvo::NotifierToolTip)
