#pragma once

#include "ui/ImageItem.h"

#include <QtQml/qqmlregistration.h>

namespace halvo {

/// The surfaces of a colour picker: every saturation (to the right) and brightness (upwards) of a
/// hue, or a strip of all hues.
class ColorPlane : public halvo::ImageItem { // in full: Qt 6.4 reads the text
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool hues READ hues WRITE setHues NOTIFY huesChanged FINAL)
    Q_PROPERTY(qreal hue READ hue WRITE setHue NOTIFY hueChanged FINAL)

  public:
    using ImageItem::ImageItem;

    bool hues() const { return hues_; }
    void setHues(bool hues);
    qreal hue() const { return hue_; }
    void setHue(qreal hue); ///< from 0 to 1

  Q_SIGNALS:
    void huesChanged();
    void hueChanged();

  protected:
    QImage picture(QSize pixels, qreal pixelRatio) override;

  private:
    bool hues_ = false;
    qreal hue_ = 0;
};

} // namespace halvo
