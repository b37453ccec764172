#include "qt/StatusPainter.h"

#include <QPainter>
#include <QPainterPath>
#include <QSvgRenderer>

#include <algorithm>

namespace halvo {

namespace {

/// Loaded once per process; without the resource the idle item is empty.
QSvgRenderer& idleImage() {
    static QSvgRenderer image(QStringLiteral(":/halvo/IdleWaveform.svg"));
    return image;
}

void drawIdleSine(QPainter& painter, QSizeF size) {
    auto& image = idleImage();
    if (!image.isValid()) return;
    const QSizeF own = image.defaultSize();
    const qreal scale = std::min(size.width() / own.width(), size.height() / own.height());
    const QSizeF drawn = own * scale;
    image.render(
        &painter,
        {QPointF((size.width() - drawn.width()) / 2, (size.height() - drawn.height()) / 2), drawn});
}

void drawEnvelope(QPainter& painter, const StatusPicture& picture) {
    QPainterPath path;
    for (const auto& bar : picture.bars) {
        path.moveTo(bar.x, bar.top);
        path.lineTo(bar.x, bar.bottom);
    }
    painter.setPen(QPen(Qt::black, picture.lineWidth, Qt::SolidLine, Qt::RoundCap));
    painter.drawPath(path);
}

QColor toneOf(const StatusPicture& picture, const StatusTones& tones) {
    if (!picture.color) return tones.label;
    if (!*picture.color) return tones.accent;
    const auto& color = **picture.color;
    return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                            static_cast<float>(color.blue));
}

} // namespace

QImage StatusPainter::mask(const StatusPicture& picture, QSize size, qreal scale) {
    QImage image(size * scale, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    if (picture.kind == StatusPicture::Kind::nothing) return image;
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    if (picture.kind == StatusPicture::Kind::idle) {
        drawIdleSine(painter, size);
    } else {
        drawEnvelope(painter, picture);
    }
    return image;
}

QImage StatusPainter::paint(const StatusPicture& picture, QSize size, qreal scale,
                            const StatusTones& tones) {
    const QImage shape = mask(picture, size, scale);
    QImage image(shape.size(), QImage::Format_ARGB32);
    // Coloured last: premultiplied pixels would lose the colour of a faint edge.
    const QRgb tone = toneOf(picture, tones).rgb() & 0x00FFFFFFU;
    for (int y = 0; y < image.height(); ++y) {
        const auto* from = reinterpret_cast<const QRgb*>(shape.constScanLine(y));
        auto* to = reinterpret_cast<QRgb*>(image.scanLine(y));
        std::transform(from, from + image.width(), to, [tone](QRgb pixel) {
            const QRgb alpha = pixel & 0xFF000000U;
            return alpha ? alpha | tone : 0;
        });
    }
    return image;
}

} // namespace halvo
