#pragma once

#include "ui/ImageItem.h"

#include <QBrush>
#include <QColor>
#include <QImage>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

namespace halvo {

/// A cover: fills its square, with rounded corners. Without an image it is filled with the accent
/// colour.
class Artwork : public halvo::ImageItem { // in full: Qt 6.4 reads the text
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QVariant image READ image WRITE setImage NOTIFY imageChanged FINAL)
    Q_PROPERTY(QColor accent READ accent WRITE setAccent NOTIFY accentChanged FINAL)

  public:
    using ImageItem::ImageItem;

    QVariant image() const { return image_; }
    void setImage(const QVariant& image); ///< a QImage
    QColor accent() const { return accent_; }
    void setAccent(const QColor& accent);

  Q_SIGNALS:
    void imageChanged();
    void accentChanged();

  protected:
    QImage picture(QSize pixels, qreal pixelRatio) override;

  private:
    QBrush ground(QSize pixels) const;

    QImage image_;
    QColor accent_ = Qt::gray;
};

} // namespace halvo
