#include "ui/Artwork.h"

#include <QLinearGradient>
#include <QPainter>

namespace halvo {

namespace {

constexpr qreal kCornerRadius = 6;

} // namespace

void Artwork::setImage(const QVariant& image) {
    image_ = image.value<QImage>();
    redraw();
    Q_EMIT imageChanged();
}

void Artwork::setAccent(const QColor& accent) {
    if (accent == accent_) return;
    accent_ = accent;
    if (image_.isNull()) redraw();
    Q_EMIT accentChanged();
}

QBrush Artwork::ground(QSize pixels) const {
    if (image_.isNull()) {
        QLinearGradient gradient(0, 0, 0, pixels.height());
        gradient.setColorAt(0, accent_.lighter(115));
        gradient.setColorAt(1, accent_.darker(150));
        return gradient;
    }
    const QImage scaled =
        image_.scaled(pixels, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    // Centred: the middle of the cover is shown.
    QBrush cover(scaled);
    cover.setTransform(QTransform::fromTranslate((pixels.width() - scaled.width()) / 2.0,
                                                 (pixels.height() - scaled.height()) / 2.0));
    return cover;
}

QImage Artwork::picture(QSize pixels, qreal pixelRatio) {
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground(pixels));
    painter.drawRoundedRect(QRectF(QPointF(), pixels), kCornerRadius * pixelRatio,
                            kCornerRadius * pixelRatio);
    return image;
}

} // namespace halvo
