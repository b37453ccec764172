#pragma once

#include "ui/ImageItem.h"

#include <QColor>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace halvo {

/// One of the bundled symbols in one colour.
class Icon : public halvo::ImageItem { // in full: Qt 6.4 reads the text
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged FINAL)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged FINAL)
    Q_PROPERTY(qreal size READ size WRITE setSize NOTIFY sizeChanged FINAL)

  public:
    using ImageItem::ImageItem;

    QString name() const { return name_; }
    /// A file of the icons' folder, without its ending.
    void setName(const QString& name);
    QColor color() const { return color_; }
    void setColor(const QColor& color);
    qreal size() const { return implicitWidth(); }
    /// Width and height in points.
    void setSize(qreal size);

  Q_SIGNALS:
    void nameChanged();
    void colorChanged();
    void sizeChanged();

  protected:
    QImage picture(QSize pixels, qreal pixelRatio) override;

  private:
    QString name_;
    QColor color_ = Qt::black;
};

} // namespace halvo
