#pragma once

#include <QImage>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace halvo {

/// Shows a picture that is drawn to the screen's own pixels, so it is sharp at every scale.
class ImageItem : public QQuickItem {
    Q_OBJECT
    QML_ANONYMOUS

  public:
    explicit ImageItem(QQuickItem* parent = nullptr);

  protected:
    /// The picture for a place of this many pixels; null shows nothing.
    virtual QImage picture(QSize pixels, qreal pixelRatio) = 0;
    /// Its place in the item, in points.
    virtual QRectF place(qreal pixelRatio) const;
    /// Call when the picture's content has changed.
    void redraw();

    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;
    void itemChange(ItemChange change, const ItemChangeData& value) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;

  private:
    bool stale_ = true;
};

} // namespace halvo
