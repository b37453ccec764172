#pragma once

#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <vector>

namespace halvo {

/// A node of a menu on the bus.
struct BusMenuItem {
    int id = 0;
    QVariantMap properties;
    QList<QDBusVariant> children;
};

/// Properties of one node.
struct BusMenuProperties {
    int id = 0;
    QVariantMap properties;
};

QDBusArgument& operator<<(QDBusArgument& argument, const BusMenuItem& item);
const QDBusArgument& operator>>(const QDBusArgument& argument, BusMenuItem& item);
QDBusArgument& operator<<(QDBusArgument& argument, const BusMenuProperties& item);
const QDBusArgument& operator>>(const QDBusArgument& argument, BusMenuProperties& item);

/// The item's context menu for desktops that draw it themselves: com.canonical.dbusmenu, one level,
/// in which only check marks change. Main thread only.
class StatusMenu final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version MEMBER version_ CONSTANT)
    Q_PROPERTY(QString Status MEMBER status_ CONSTANT)
    Q_PROPERTY(QString TextDirection MEMBER textDirection_ CONSTANT)

  public:
    struct Entry {
        QString label;
        std::function<void()> chosen;
        std::function<bool()> isMarked = {}; ///< asked at each showing; null: no mark
    };

    static const QString kPath;

    explicit StatusMenu(std::vector<Entry> entries);
    ~StatusMenu() override;

    const std::vector<Entry>& entries() const { return entries_; }

  public Q_SLOTS:
    Q_SCRIPTABLE uint GetLayout(int parentId, int depth, const QStringList& names,
                                halvo::BusMenuItem& layout);
    Q_SCRIPTABLE QList<halvo::BusMenuProperties> GetGroupProperties(const QList<int>& ids,
                                                                    const QStringList& names);
    Q_SCRIPTABLE QDBusVariant GetProperty(int id, const QString& name);
    Q_SCRIPTABLE void Event(int id, const QString& event, const QDBusVariant& data, uint timestamp);
    /// Whether a check mark has changed since the desktop fetched the menu.
    Q_SCRIPTABLE bool AboutToShow(int id);

  Q_SIGNALS:
    Q_SCRIPTABLE void LayoutUpdated(uint revision, int parent);

  private:
    QVariantMap properties(int id) const;
    std::vector<bool> marks() const;
    void tellOfMarks();

    std::vector<Entry> entries_;   ///< the entry with id n is the one before the n-th
    std::vector<bool> shownMarks_; ///< as last sent to the desktop
    uint revision_ = 1;
    uint version_ = 3;
    QString status_ = QStringLiteral("normal");
    QString textDirection_ = QStringLiteral("ltr");
};

} // namespace halvo

Q_DECLARE_METATYPE(halvo::BusMenuItem)
Q_DECLARE_METATYPE(halvo::BusMenuProperties)
