#include "ui/Presets.h"

#include "devices/DeviceManager.h"
#include "nowplaying/AutoGenreController.h"
#include "presets/PresetManager.h"
#include "ui/QtValues.h"

#include <algorithm>

namespace halvo {

Presets::Presets(PresetManager& manager, DeviceManager& devices, AutoGenreController& controller,
                 QObject* parent)
    : RowsModel(parent), manager_(manager), devices_(devices), controller_(controller) {
    refresh();
    const auto changed = [this](const auto&) {
        refresh();
        Q_EMIT boundChanged();
    };
    const auto bindingChanged = [this](const auto&) { Q_EMIT boundChanged(); };
    subscriptions_.push_back(manager_.presets.didChange(changed));
    subscriptions_.push_back(manager_.activePresetID.didChange(changed));
    subscriptions_.push_back(manager_.deviceBindings.didChange(bindingChanged));
    subscriptions_.push_back(devices_.selectedDeviceID.didChange(bindingChanged));
}

QVariant Presets::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const auto& preset = row(index);
    switch (role) {
    case idRole:
        return toQt(preset.id);
    case nameRole:
        return toQt(preset.name);
    case customRole:
        return preset.isCustom;
    case activeRole:
        return preset.isActive;
    default:
        return {};
    }
}

QHash<int, QByteArray> Presets::roleNames() const {
    return {{idRole, "presetID"},
            {nameRole, "name"},
            {customRole, "isCustom"},
            {activeRole, "isActive"}};
}

bool Presets::bound() const {
    const auto& active = manager_.activePresetID.get();
    const auto& bindings = manager_.deviceBindings.get();
    const auto binding = bindings.find(devices_.selectedDeviceID.get());
    return active && binding != bindings.end() && binding->second == *active;
}

void Presets::toggleBinding() {
    manager_.toggleBinding(devices_.selectedDeviceID.get());
}

void Presets::activate(const QString& id) {
    const auto preset = find(id);
    if (!preset) return;
    manager_.activate(*preset);
    if (controller_.isEnabled.get()) controller_.isEnabled.set(false);
}

void Presets::duplicate(const QString& id) {
    if (const auto preset = find(id)) manager_.activate(manager_.duplicatePreset(*preset));
}

void Presets::rename(const QString& id, const QString& name) {
    if (const auto preset = find(id)) manager_.renamePreset(*preset, name.toStdString());
}

void Presets::remove(const QString& id) {
    if (const auto preset = find(id)) manager_.deletePreset(*preset);
}

void Presets::create() {
    manager_.activate(manager_.createCustomPreset("Custom"));
}

void Presets::moveOnto(const QString& draggedID, const QString& targetID) {
    const auto& list = manager_.presets.get();
    const auto place = [&list](const QString& id) {
        const auto uuid = toUUID(id);
        return std::ranges::find_if(
            list, [&uuid](const EQPreset& preset) { return uuid && preset.id == *uuid; });
    };
    const auto from = place(draggedID);
    const auto to = place(targetID);
    if (from == list.end() || to == list.end()) return;
    manager_.movePreset(static_cast<std::size_t>(from - list.begin()),
                        static_cast<std::size_t>(to - list.begin()));
}

void Presets::refresh() {
    const auto& active = manager_.activePresetID.get();
    std::vector<PresetRow> list;
    for (const auto& preset : manager_.presets.get()) {
        list.push_back({preset.id, preset.name, !preset.isFactory, active == preset.id});
    }
    setRows(list);
}

std::optional<EQPreset> Presets::find(const QString& id) const {
    const auto uuid = toUUID(id);
    for (const auto& preset : manager_.presets.get()) {
        if (uuid && preset.id == *uuid) return preset;
    }
    return std::nullopt;
}

} // namespace halvo
