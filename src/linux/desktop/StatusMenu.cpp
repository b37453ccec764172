#include "linux/desktop/StatusMenu.h"

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
    const auto& entry = entries_[static_cast<std::size_t>(id) - 1];
    QVariantMap result{{QStringLiteral("label"), entry.label}};
    if (entry.isMarked) {
        result.insert(QStringLiteral("toggle-type"), QStringLiteral("checkmark"));
        result.insert(QStringLiteral("toggle-state"), entry.isMarked() ? 1 : 0);
    }
    return result;
}

std::vector<bool> StatusMenu::marks() const {
    std::vector<bool> result;
    for (const auto& entry : entries_)
        result.push_back(entry.isMarked && entry.isMarked());
    return result;
}

void StatusMenu::tellOfMarks() {
    if (shownMarks_ == marks()) return;
    shownMarks_ = marks();
    Q_EMIT LayoutUpdated(++revision_, 0);
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
    shownMarks_ = marks();
    return revision_;
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
    tellOfMarks();
}

bool StatusMenu::AboutToShow(int /*id*/) {
    const bool changed = shownMarks_ != marks();
    tellOfMarks();
    return changed;
}

} // namespace halvo
