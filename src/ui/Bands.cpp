#include "ui/Bands.h"

#include "audio/SpectrumData.h"
#include "presets/PresetManager.h"
#include "ui/QtValues.h"

#include <array>

namespace halvo {

namespace {

constexpr std::array<const char*, 10> kLabels = {"32", "64", "125", "250", "500",
                                                 "1K", "2K", "4K",  "8K",  "16K"};

} // namespace

Bands::Bands(PresetManager& manager, SpectrumData& spectrum, QObject* parent)
    : RowsModel(parent), manager_(manager), spectrum_(spectrum) {
    refresh();
    gains_.push_back(manager_.presets.didChange([this](const auto&) { refresh(); }));
    gains_.push_back(manager_.activePresetID.didChange([this](const auto&) { refresh(); }));
}

QVariant Bands::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const auto& band = row(index);
    switch (role) {
    case labelRole:
        return QString::fromLatin1(kLabels[band.id]);
    case gainRole:
        return band.gain;
    case levelRole:
        return band.level;
    default:
        return {};
    }
}

QHash<int, QByteArray> Bands::roleNames() const {
    return {{labelRole, "label"}, {gainRole, "gain"}, {levelRole, "spectrumLevel"}};
}

void Bands::setGain(int band, float gain) {
    if (band >= 0) manager_.setBandGain(static_cast<std::size_t>(band), gain);
}

void Bands::setFollowed(bool followed) {
    levels_.cancel();
    if (!followed) return;
    levels_ = spectrum_.bandLevels.didChange([this](const auto&) { refresh(); });
    refresh();
}

void Bands::refresh() {
    const auto& levels = spectrum_.bandLevels.get();
    std::vector<BandRow> bands;
    bands.reserve(kLabels.size());
    for (std::size_t band = 0; band < kLabels.size(); ++band)
        bands.push_back({band, manager_.bandGain(band), levels[band]});
    setRows(bands);
}

} // namespace halvo
