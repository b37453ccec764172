#include "ui/Icon.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

namespace halvo {

void Icon::setName(const QString& name) {
    if (name == name_) return;
    name_ = name;
    redraw();
    Q_EMIT nameChanged();
}

void Icon::setColor(const QColor& color) {
    if (color == color_) return;
    color_ = color;
    redraw();
    Q_EMIT colorChanged();
}

void Icon::setSize(qreal size) {
    if (size == implicitWidth()) return;
    setImplicitSize(size, size);
    Q_EMIT sizeChanged();
}

QImage Icon::picture(QSize pixels, qreal) {
    if (name_.isEmpty()) return {};
    QString file = QStringLiteral(":/halvo/icons/%1.svg").arg(name_);
    if (!QFile::exists(file)) file = QStringLiteral(":/halvo/%1.svg").arg(name_);
    QSvgRenderer drawing(file);
    if (!drawing.isValid()) return {};
    drawing.setAspectRatioMode(Qt::KeepAspectRatio);
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    drawing.render(&painter, QRectF(QPointF(), pixels));
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color_);
    return image;
}

} // namespace halvo
