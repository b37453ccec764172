#include "ui/Artwork.h"

#include <QPainter>

namespace halvo {

namespace {

constexpr qreal kRadius = 6;

} // namespace

void Artwork::setImage(const QVariant& image) {
    image_ = image.value<QImage>();
    redraw();
    Q_EMIT imageChanged();
}

QImage Artwork::picture(QSize pixels, qreal pixelRatio) {
    if (image_.isNull()) return {};
    const QImage scaled =
        image_.scaled(pixels, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    // Set off by half of what hangs over: the middle of the cover is shown.
    QBrush cover(scaled);
    cover.setTransform(QTransform::fromTranslate((pixels.width() - scaled.width()) / 2.0,
                                                 (pixels.height() - scaled.height()) / 2.0));
    painter.setBrush(cover);
    painter.drawRoundedRect(QRectF(QPointF(), pixels), kRadius * pixelRatio, kRadius * pixelRatio);
    return image;
}

} // namespace halvo
