#pragma once

#include "offline/OfflineMachine.h"
#include "ui/PanelContent.h"

#include <QImage>
#include <QPoint>
#include <QQuickItem>
#include <QQuickWindow>
#include <QString>

namespace halvo {

/// The panel in a window, with synthetic events of mouse and keyboard.
class OfflinePanel {
  public:
    explicit OfflinePanel(OfflineMachine& machine, VolumeTaper taper = VolumeTaper::identity);

    PanelContent& content() { return content_; }
    QQuickWindow& window() { return window_; }
    void show();

    /// Runs both event loops, the toolkit's for this many milliseconds.
    void settle(int milliseconds = 20);

    /// The visible item of a view's name; the `index`th of them, and null where there is none.
    QQuickItem* find(const QString& view, int index = 0, QQuickWindow* window = nullptr);
    /// The visible control with this accessible name.
    QQuickItem* named(const QString& name, QQuickWindow* window = nullptr);
    /// The item's accessible name.
    static QString nameOf(QQuickItem* item);
    /// The open menu's window; null when there is none.
    QQuickWindow* menu();

    static QPointF middle(QQuickItem* item) {
        return item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
    }
    void press(QPointF place, Qt::MouseButton button = Qt::LeftButton);
    void move(QPointF place);
    void release(QPointF place);
    void click(QQuickItem* item, Qt::MouseButton button = Qt::LeftButton);
    void doubleClick(QPointF place);
    void type(Qt::Key key, const QString& text = {}, Qt::KeyboardModifiers modifiers = {});

    /// What is on the screen: the panel, and the menu over it.
    QImage picture();

  private:
    void send(QWindow& window, QEvent::Type type, QPointF place, Qt::MouseButton button);
    void resize();

    OfflineMachine& machine_;
    PanelContent content_;
    QQuickWindow window_;
    Qt::MouseButtons buttons_;
    ulong time_ = 1000;
};

} // namespace halvo
