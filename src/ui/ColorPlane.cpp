#include "ui/ColorPlane.h"

#include <QLinearGradient>
#include <QPainter>

namespace halvo {

namespace {

QLinearGradient rainbow(qreal width) {
    QLinearGradient gradient(0, 0, width, 0);
    constexpr int kStops = 6;
    for (int stop = 0; stop <= kStops; ++stop) {
        const qreal position = static_cast<qreal>(stop) / kStops;
        gradient.setColorAt(position,
                            QColor::fromHsvF(static_cast<float>(stop % kStops) / kStops, 1, 1));
    }
    return gradient;
}

} // namespace

void ColorPlane::setHues(bool hues) {
    if (hues == hues_) return;
    hues_ = hues;
    redraw();
    Q_EMIT huesChanged();
}

void ColorPlane::setHue(qreal hue) {
    if (hue == hue_) return;
    hue_ = hue;
    if (!hues_) redraw();
    Q_EMIT hueChanged();
}

QImage ColorPlane::picture(QSize pixels, qreal pixelRatio) {
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const QRectF all(QPointF(), pixels);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const qreal radius = (hues_ ? 6 : 4) * pixelRatio;
    const auto fill = [&](const QBrush& brush) {
        painter.setBrush(brush);
        painter.drawRoundedRect(all, radius, radius);
        painter.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    };
    if (hues_) {
        fill(rainbow(all.width()));
        return image;
    }
    QLinearGradient saturation(0, 0, all.width(), 0);
    saturation.setColorAt(0, Qt::white);
    saturation.setColorAt(1, QColor::fromHsvF(static_cast<float>(hue_), 1, 1));
    fill(saturation);
    QLinearGradient darkness(0, 0, 0, all.height());
    darkness.setColorAt(0, QColor(0, 0, 0, 0));
    darkness.setColorAt(1, Qt::black);
    fill(darkness);
    return image;
}

} // namespace halvo
