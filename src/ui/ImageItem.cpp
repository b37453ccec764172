#include "ui/ImageItem.h"

#include <QQuickWindow>
#include <QSGImageNode>

namespace halvo {

ImageItem::ImageItem(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
}

QRectF ImageItem::place(qreal) const {
    return boundingRect();
}

void ImageItem::redraw() {
    stale_ = true;
    update();
}

QSGNode* ImageItem::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    if (old && !stale_) return old;
    stale_ = false;
    const qreal ratio = window()->effectiveDevicePixelRatio();
    const QRectF rect = place(ratio);
    const QImage image = rect.isEmpty() ? QImage() : picture((rect.size() * ratio).toSize(), ratio);
    if (image.isNull()) {
        delete old;
        return nullptr;
    }
    auto* node = static_cast<QSGImageNode*>(old);
    if (!node) {
        node = window()->createImageNode();
        node->setOwnsTexture(true);
        node->setFiltering(QSGTexture::Linear);
    }
    node->setTexture(window()->createTextureFromImage(image, QQuickWindow::TextureHasAlphaChannel));
    node->setRect(rect);
    return node;
}

void ImageItem::itemChange(ItemChange change, const ItemChangeData& value) {
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange) redraw();
    QQuickItem::itemChange(change, value);
}

void ImageItem::geometryChange(const QRectF& now, const QRectF& before) {
    if (now.size() != before.size()) redraw();
    QQuickItem::geometryChange(now, before);
}

} // namespace halvo
