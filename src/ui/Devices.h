#pragma once

#include "base/Subscription.h"
#include "devices/AudioOutputDevice.h"
#include "ui/RowsModel.h"

#include <QString>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace halvo {

class DeviceManager;

/// The outputs in the picker, and the selected one.
struct DeviceRow {
    std::string id; ///< the UID
    std::string name;
    bool operator==(const DeviceRow&) const = default;
};

class Devices : public RowsModel<DeviceRow> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the panel")
    Q_PROPERTY(int count READ count NOTIFY listChanged FINAL)
    Q_PROPERTY(QStringList names READ names NOTIFY listChanged FINAL)
    Q_PROPERTY(int selectedIndex READ selectedIndex NOTIFY selectionChanged FINAL)
    Q_PROPERTY(QString selectedName READ selectedName NOTIFY selectionChanged FINAL)

  public:
    explicit Devices(DeviceManager& manager, QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    int count() const { return rowCount(); }
    QStringList names() const;
    /// −1 when the selected device is not among those offered.
    int selectedIndex() const;
    QString selectedName() const;

    Q_INVOKABLE void select(int index);

  Q_SIGNALS:
    void listChanged();
    void selectionChanged();

  private:
    enum Role { nameRole = Qt::UserRole };

    void refresh();

    DeviceManager& manager_;
    Subscription devices_;
    Subscription selection_;
};

} // namespace halvo
