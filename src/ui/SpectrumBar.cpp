#include "ui/SpectrumBar.h"

#include <QLinearGradient>
#include <QPainter>
#include <QQuickWindow>

#include <algorithm>
#include <cmath>

namespace halvo {

namespace {

constexpr qreal kBarRadius = 3;
constexpr float kTopOpacity = 0.08F;
constexpr float kBottomOpacity = 0.2F;

QColor faded(QColor color, float opacity) {
    color.setAlphaF(opacity);
    return color;
}

} // namespace

void SpectrumBar::setLevel(float level) {
    const float within = std::isfinite(level) ? std::clamp(level, 0.0F, 1.0F) : 0.0F;
    if (within == level_) return;
    level_ = within;
    const int tall = window() ? heightInPixels(window()->effectiveDevicePixelRatio()) : shown_;
    if (tall != shown_) redraw();
    shown_ = tall;
    Q_EMIT levelChanged();
}

void SpectrumBar::setColor(const QColor& color) {
    if (color == color_) return;
    color_ = color;
    redraw();
    Q_EMIT colorChanged();
}

int SpectrumBar::heightInPixels(qreal pixelRatio) const {
    return static_cast<int>(std::lround(height() * pixelRatio * static_cast<qreal>(level_)));
}

QRectF SpectrumBar::place(qreal pixelRatio) const {
    const qreal tall = heightInPixels(pixelRatio) / pixelRatio;
    return {0, height() - tall, width(), tall};
}

QImage SpectrumBar::picture(QSize pixels, qreal pixelRatio) {
    shown_ = pixels.height();
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QLinearGradient gradient(0, 0, 0, pixels.height());
    gradient.setColorAt(0, faded(color_, kTopOpacity));
    gradient.setColorAt(1, faded(color_, kBottomOpacity));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(gradient);
    const qreal radius = std::min(kBarRadius * pixelRatio, pixels.height() / 2.0);
    painter.drawRoundedRect(QRectF(QPointF(), pixels), radius, radius);
    return image;
}

} // namespace halvo
