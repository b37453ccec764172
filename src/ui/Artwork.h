#pragma once

#include "ui/ImageItem.h"

#include <QImage>
#include <QtQml/qqmlregistration.h>

namespace halvo {

/// A cover: fills its square, with rounded corners; nothing without an image.
class Artwork : public ImageItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged FINAL)

  public:
    using ImageItem::ImageItem;

    QImage image() const { return image_; }
    void setImage(const QImage& image);

  Q_SIGNALS:
    void imageChanged();

  protected:
    QImage picture(QSize pixels, qreal pixelRatio) override;

  private:
    QImage image_;
};

} // namespace halvo
