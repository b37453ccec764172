#pragma once

#include "base/EQPreset.h"
#include "base/Subscription.h"
#include "ui/RowsModel.h"

#include <QString>
#include <QtQml/qqmlregistration.h>

#include <optional>
#include <vector>

namespace halvo {

class AutoGenreController;
class DeviceManager;
class PresetManager;

struct PresetRow {
    UUID id;
    std::string name;
    bool isCustom = false;
    bool isActive = false;
    bool operator==(const PresetRow&) const = default;
};

/// The presets in list order, their operations, and whether the active one is bound to the selected
/// output. Presets are identified by the text of their UUID.
class Presets : public RowsModel<PresetRow> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the panel")
    Q_PROPERTY(bool bound READ bound NOTIFY boundChanged FINAL)

  public:
    Presets(PresetManager& manager, DeviceManager& devices, AutoGenreController& controller,
            QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    bool bound() const;
    Q_INVOKABLE void toggleBinding();

    /// A choice by the user: ends automatic mode.
    Q_INVOKABLE void activate(const QString& id);
    Q_INVOKABLE void duplicate(const QString& id);
    Q_INVOKABLE void rename(const QString& id, const QString& name);
    Q_INVOKABLE void remove(const QString& id);
    Q_INVOKABLE void create();
    /// Moves the dragged preset to the target's place.
    Q_INVOKABLE void moveOnto(const QString& draggedID, const QString& targetID);

  Q_SIGNALS:
    void boundChanged();

  private:
    enum Role { idRole = Qt::UserRole, nameRole, customRole, activeRole };

    void refresh();
    std::optional<EQPreset> find(const QString& id) const;

    PresetManager& manager_;
    DeviceManager& devices_;
    AutoGenreController& controller_;
    std::vector<Subscription> subscriptions_;
};

} // namespace halvo
