#pragma once

#include "ui/ImageItem.h"

#include <QImage>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

namespace halvo {

/// A cover: fills its square, with rounded corners; nothing without an image.
class Artwork : public halvo::ImageItem { // in full: Qt 6.4 reads the text
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QVariant image READ image WRITE setImage NOTIFY imageChanged FINAL)

  public:
    using ImageItem::ImageItem;

    QVariant image() const { return image_; }
    void setImage(const QVariant& image); ///< a QImage

  Q_SIGNALS:
    void imageChanged();

  protected:
    QImage picture(QSize pixels, qreal pixelRatio) override;

  private:
    QImage image_;
};

} // namespace halvo
