#include "offline/OfflinePanel.h"

#include <QAccessible>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <chrono>
#include <functional>

namespace halvo {

namespace {

using Accept = std::function<bool(QQuickItem&)>;

/// The grab without the corners, which not every offscreen platform shows as transparent.
QImage rounded(const QImage& grab, qreal radius) {
    QImage image(grab.size(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(grab.devicePixelRatio());
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath outline;
    outline.addRoundedRect(QRectF(QPointF(), image.deviceIndependentSize()), radius, radius);
    painter.setClipPath(outline);
    painter.drawImage(0, 0, grab);
    return image;
}

QQuickItem* search(QQuickItem* item, const Accept& accept) {
    if (!item->isVisible()) return nullptr;
    if (accept(*item)) return item;
    for (auto* child : item->childItems()) {
        if (auto* found = search(child, accept)) return found;
    }
    return nullptr;
}

} // namespace

OfflinePanel::OfflinePanel(OfflineMachine& machine, VolumeTaper taper)
    : machine_(machine), content_(machine.services(), machine.host(taper)) {
    window_.setTitle(QStringLiteral("Halvo"));
    window_.setFlags(Qt::FramelessWindowHint);
    content_.attach(window_);
    QObject::connect(&content_, &PanelContent::sizeChanged, &window_, [this] { resize(); });
}

void OfflinePanel::show() {
    resize();
    window_.show();
    window_.requestActivate();
    settle(50);
}

void OfflinePanel::resize() {
    window_.resize(content_.fittingSize());
}

void OfflinePanel::settle(int milliseconds) {
    QElapsedTimer timer;
    timer.start();
    do {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
        machine_.fake().mainQueue.flush();
    } while (timer.elapsed() < milliseconds);
    QCoreApplication::processEvents();
}

QQuickItem* OfflinePanel::find(const QString& view, int index, QQuickWindow* window) {
    auto* root = (window ? window : &window_)->contentItem();
    return search(root, [&](QQuickItem& item) {
        const auto name = QString::fromLatin1(item.metaObject()->className());
        const auto plain = name.section(QStringLiteral("_QML"), 0, 0).section(u':', -1);
        return plain == view && index-- == 0;
    });
}

QQuickItem* OfflinePanel::named(const QString& name, QQuickWindow* window) {
    auto* root = (window ? window : &window_)->contentItem();
    return search(
        root, [&](QQuickItem& item) { return item.activeFocusOnTab() && nameOf(&item) == name; });
}

QString OfflinePanel::nameOf(QQuickItem* item) {
    auto* const accessible = QAccessible::queryAccessibleInterface(item);
    return accessible ? accessible->text(QAccessible::Name) : QString();
}

QQuickWindow* OfflinePanel::menu() {
    const auto windows = QGuiApplication::allWindows();
    for (auto* window : windows) {
        if (window->type() == Qt::Popup && window->isVisible())
            return qobject_cast<QQuickWindow*>(window);
    }
    return nullptr;
}

void OfflinePanel::send(QWindow& window, QEvent::Type type, QPointF place, Qt::MouseButton button) {
    time_ += 20;
    QMouseEvent event(type, place, window.mapToGlobal(place), button, buttons_, Qt::NoModifier);
    event.setTimestamp(time_);
    QCoreApplication::sendEvent(&window, &event);
    settle(1);
}

void OfflinePanel::press(QPointF place, Qt::MouseButton button) {
    time_ += 1000; // long enough after the last press to be no double click
    buttons_ = button;
    send(window_, QEvent::MouseButtonPress, place, button);
}

void OfflinePanel::move(QPointF place) {
    send(window_, QEvent::MouseMove, place, Qt::NoButton);
}

void OfflinePanel::release(QPointF place) {
    const auto button = buttons_ & Qt::RightButton ? Qt::RightButton : Qt::LeftButton;
    buttons_ = Qt::NoButton;
    send(window_, QEvent::MouseButtonRelease, place, button);
}

void OfflinePanel::click(QQuickItem* item, Qt::MouseButton button) {
    auto& window = *item->window();
    const auto place = middle(item);
    time_ += 1000;
    buttons_ = button;
    send(window, QEvent::MouseButtonPress, place, button);
    buttons_ = Qt::NoButton;
    send(window, QEvent::MouseButtonRelease, place, button);
}

void OfflinePanel::doubleClick(QPointF place) {
    press(place);
    release(place);
    buttons_ = Qt::LeftButton;
    send(window_, QEvent::MouseButtonPress, place, Qt::LeftButton);
    send(window_, QEvent::MouseButtonDblClick, place, Qt::LeftButton);
    release(place);
}

void OfflinePanel::type(Qt::Key key, const QString& text, Qt::KeyboardModifiers modifiers) {
    auto* const focused = QGuiApplication::focusWindow();
    for (const auto kind : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(kind, key, modifiers, text);
        QCoreApplication::sendEvent(focused ? focused : &window_, &event);
    }
    settle(1);
}

QImage OfflinePanel::picture() {
    QImage image = rounded(window_.grabWindow(), 10);
    auto* const open = menu();
    if (!open) return image;
    const qreal ratio = window_.effectiveDevicePixelRatio();
    const QRect panel = window_.geometry();
    const QRect all = panel.united(open->geometry());
    QImage both(all.size() * ratio, QImage::Format_ARGB32_Premultiplied);
    both.setDevicePixelRatio(ratio);
    both.fill(Qt::transparent);
    QPainter painter(&both);
    painter.drawImage(panel.topLeft() - all.topLeft(), image);
    painter.drawImage(open->geometry().topLeft() - all.topLeft(), rounded(open->grabWindow(), 6));
    return both;
}

} // namespace halvo
