#include "platform/linux/StatusMenu.h"

#include <QDBusConnection>
#include <QDBusMetaType>

#include <utility>

namespace halvo {

const QString StatusMenu::kPath = QStringLiteral("/StatusNotifierItem/Menu");

QDBusArgument& operator<<(QDBusArgument& argument, const BusMenuItem& item) {
    argument.beginStructure();
    argument << item.id << item.properties << item.children;
    argument.endStructure();
    return argument; // NOLINT(bugprone-return-const-ref-from-parameter): the toolkit asks for it
}

const QDBusArgument& operator>>(const QDBusArgument& argument, BusMenuItem& item) {
    argument.beginStructure();
    argument >> item.id >> item.properties >> item.children;
    argument.endStructure();
    return argument; // NOLINT(bugprone-return-const-ref-from-parameter): the toolkit asks for it
}

QDBusArgument& operator<<(QDBusArgument& argument, const BusMenuProperties& item) {
    argument.beginStructure();
    argument << item.id << item.properties;
    argument.endStructure();
    return argument; // NOLINT(bugprone-return-const-ref-from-parameter): the toolkit asks for it
}

const QDBusArgument& operator>>(const QDBusArgument& argument, BusMenuProperties& item) {
    argument.beginStructure();
    argument >> item.id >> item.properties;
    argument.endStructure();
    return argument; // NOLINT(bugprone-return-const-ref-from-parameter): the toolkit asks for it
}

StatusMenu::StatusMenu(std::vector<Entry> entries) : entries_(std::move(entries)) {
    qDBusRegisterMetaType<BusMenuItem>();
    qDBusRegisterMetaType<BusMenuProperties>();
    qDBusRegisterMetaType<QList<BusMenuProperties>>();
    QDBusConnection::sessionBus().registerObject(kPath, this,
                                                 QDBusConnection::ExportScriptableContents);
}

StatusMenu::~StatusMenu() {
    QDBusConnection::sessionBus().unregisterObject(kPath);
}

QVariantMap StatusMenu::properties(int id) const {
    if (id == 0) return {{QStringLiteral("children-display"), QStringLiteral("submenu")}};
    if (id < 0 || id > static_cast<int>(entries_.size())) return {};
    return {{QStringLiteral("label"), entries_[static_cast<std::size_t>(id) - 1].label}};
}

uint StatusMenu::GetLayout(int parentId, int depth, const QStringList& /*names*/,
                           BusMenuItem& layout) {
    layout = {parentId, properties(parentId), {}};
    if (parentId == 0 && depth != 0) {
        for (int id = 1; id <= static_cast<int>(entries_.size()); ++id) {
            layout.children.append(
                QDBusVariant(QVariant::fromValue(BusMenuItem{id, properties(id), {}})));
        }
    }
    return 1; // the only revision
}

QList<BusMenuProperties> StatusMenu::GetGroupProperties(const QList<int>& ids,
                                                        const QStringList& /*names*/) {
    QList<BusMenuProperties> result;
    for (const int id : ids)
        result.append({id, properties(id)});
    return result;
}

QDBusVariant StatusMenu::GetProperty(int id, const QString& name) {
    return QDBusVariant(properties(id).value(name, QString()));
}

void StatusMenu::Event(int id, const QString& event, const QDBusVariant& /*data*/,
                       uint /*timestamp*/) {
    if (event != QStringLiteral("clicked") || id < 1 || id > static_cast<int>(entries_.size()))
        return;
    entries_[static_cast<std::size_t>(id) - 1].chosen();
}

bool StatusMenu::AboutToShow(int /*id*/) {
    return false; // nothing has changed
}

} // namespace halvo
