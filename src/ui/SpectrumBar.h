#pragma once

#include "ui/ImageItem.h"

#include <QColor>
#include <QtQml/qqmlregistration.h>

namespace halvo {

/// The backdrop of a band: a rounded bar that grows from the bottom. It is drawn again only when
/// its height in pixels changes.
class SpectrumBar : public halvo::ImageItem { // in full: Qt 6.4 reads the text
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(float level READ level WRITE setLevel NOTIFY levelChanged FINAL)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged FINAL)

  public:
    using ImageItem::ImageItem;

    float level() const { return level_; }
    void setLevel(float level); ///< from 0 to 1
    QColor color() const { return color_; }
    void setColor(const QColor& color);

  Q_SIGNALS:
    void levelChanged();
    void colorChanged();

  protected:
    QImage picture(QSize pixels, qreal pixelRatio) override;
    QRectF place(qreal pixelRatio) const override;

  private:
    int heightInPixels(qreal pixelRatio) const;

    float level_ = 0;
    int shown_ = -1; ///< the height of the picture, in pixels
    QColor color_;
};

} // namespace halvo
