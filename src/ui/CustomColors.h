#pragma once

#include "base/Subscription.h"
#include "settings/SavedColor.h"
#include "ui/RowsModel.h"

#include <QString>
#include <QtQml/qqmlregistration.h>

namespace halvo {

class AppSettings;

/// The custom colours in their order, identified by the text of their UUID.
class CustomColors : public RowsModel<SavedColor> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the panel")

  public:
    explicit CustomColors(AppSettings& settings, QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    Q_INVOKABLE void remove(const QString& id);
    /// Moves the dragged colour to the target's place.
    Q_INVOKABLE void moveOnto(const QString& draggedID, const QString& targetID);

  private:
    enum Role { idRole = Qt::UserRole, hexRole, nameRole, fillRole };

    AppSettings& settings_;
    Subscription colors_;
};

} // namespace halvo
