#include "app/StatusEQView.h"

#include <algorithm>

namespace halvo {

StatusPicture StatusEQView::draw(ScreenSize size) const {
    if (isIORunning && showActiveWaveform) return drawAmplitudeEnvelope(size);
    return {.kind = StatusPicture::Kind::idle};
}

StatusPicture StatusEQView::drawAmplitudeEnvelope(ScreenSize size) const {
    constexpr double kGain = 8; // an eighth of full scale already fills the height
    constexpr double kShortest = 0.5;
    if (waveformSamples.size() < 2) return {};
    const double half = (size.height - 6) * 0.5;
    const double step = (size.width - 4) / static_cast<double>(waveformSamples.size());
    const double middle = size.height * 0.5;
    StatusPicture picture{.kind = StatusPicture::Kind::envelope,
                          .lineWidth = std::max(step - 1, 1.0),
                          .color = waveformColor};
    picture.bars.reserve(waveformSamples.size());
    for (const float sample : waveformSamples) {
        const double x = step * 0.5 + step * static_cast<double>(picture.bars.size()) + 2;
        const double gained = static_cast<double>(sample) * kGain;
        // In this order a sample that is no number gives the shortest bar.
        const double length = std::max(kShortest, gained > 1 ? half : half * gained);
        picture.bars.push_back({x, middle - length, middle + length});
    }
    return picture;
}

} // namespace halvo
