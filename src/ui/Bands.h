#pragma once

#include "base/Subscription.h"
#include "ui/RowsModel.h"

#include <QString>
#include <QtQml/qqmlregistration.h>

#include <cstddef>
#include <vector>

namespace halvo {

class PresetManager;
class SpectrumData;

struct BandRow {
    std::size_t id = 0;
    float gain = 0;  ///< dB
    float level = 0; ///< from 0 to 1
    bool operator==(const BandRow&) const = default;
};

/// The ten bands: caption, gain in the active preset, and current level. Levels are updated only
/// while they are visible.
class Bands : public RowsModel<BandRow> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the panel")

  public:
    Bands(PresetManager& manager, SpectrumData& spectrum, QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    Q_INVOKABLE void setGain(int band, float gain);
    void setFollowed(bool followed);

  private:
    enum Role { labelRole = Qt::UserRole, gainRole, levelRole };

    void refresh();

    PresetManager& manager_;
    SpectrumData& spectrum_;
    std::vector<Subscription> gains_;
    Subscription levels_;
};

} // namespace halvo
