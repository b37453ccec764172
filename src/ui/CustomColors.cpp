#include "ui/CustomColors.h"

#include "settings/AppSettings.h"
#include "ui/QtValues.h"

#include <algorithm>

namespace halvo {

CustomColors::CustomColors(AppSettings& settings, QObject* parent)
    : RowsModel(parent), settings_(settings) {
    setRows(settings_.customColors.get());
    colors_ = settings_.customColors.didChange([this](const auto& colors) { setRows(colors); });
}

QVariant CustomColors::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const auto& color = row(index);
    switch (role) {
    case idRole:
        return toQt(color.id);
    case hexRole:
        return toQt(color.hex);
    case nameRole:
        return toQt(color.name);
    case fillRole:
        return toQt(Color::parse(color.hex).value_or(Color{}));
    default:
        return {};
    }
}

QHash<int, QByteArray> CustomColors::roleNames() const {
    return {{idRole, "colorID"}, {hexRole, "hex"}, {nameRole, "name"}, {fillRole, "fill"}};
}

void CustomColors::remove(const QString& id) {
    if (const auto uuid = toUUID(id)) settings_.removeCustomColor(*uuid);
}

void CustomColors::moveOnto(const QString& draggedID, const QString& targetID) {
    const auto& list = settings_.customColors.get();
    const auto place = [&list](const QString& id) {
        const auto uuid = toUUID(id);
        return std::ranges::find_if(
            list, [&uuid](const SavedColor& color) { return uuid && color.id == *uuid; });
    };
    const auto from = place(draggedID);
    const auto to = place(targetID);
    if (from == list.end() || to == list.end()) return;
    settings_.moveCustomColor(static_cast<std::size_t>(from - list.begin()),
                              static_cast<std::size_t>(to - list.begin()));
}

} // namespace halvo
