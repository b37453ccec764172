#include "ui/Devices.h"

#include "app/RealDevices.h"
#include "devices/DeviceManager.h"
#include "ui/QtValues.h"

namespace halvo {

Devices::Devices(DeviceManager& manager, QObject* parent) : RowsModel(parent), manager_(manager) {
    refresh();
    devices_ = manager_.outputDevices.didChange([this](const auto&) { refresh(); });
    selection_ =
        manager_.selectedDeviceID.didChange([this](const auto&) { Q_EMIT selectionChanged(); });
}

QVariant Devices::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || role != nameRole) return {};
    return toQt(row(index).name);
}

QHash<int, QByteArray> Devices::roleNames() const {
    return {{nameRole, "name"}};
}

int Devices::selectedIndex() const {
    const auto& selected = manager_.selectedDeviceID.get();
    for (int index = 0; index < rowCount(); ++index) {
        if (rows()[static_cast<std::size_t>(index)].id == selected) return index;
    }
    return -1;
}

QString Devices::selectedName() const {
    return names().value(selectedIndex());
}

QStringList Devices::names() const {
    QStringList list;
    for (const auto& device : rows())
        list.push_back(toQt(device.name));
    return list;
}

void Devices::select(int index) {
    if (index < 0 || index >= rowCount()) return;
    const std::string uid = rows()[static_cast<std::size_t>(index)].id;
    manager_.selectedDeviceID.set(uid);
}

void Devices::refresh() {
    std::vector<DeviceRow> offered;
    for (const auto& device : manager_.outputDevices.get()) {
        if (isRealDevice(device)) offered.push_back({device.uid, device.name});
    }
    setRows(offered);
    Q_EMIT listChanged();
    Q_EMIT selectionChanged();
}

} // namespace halvo
