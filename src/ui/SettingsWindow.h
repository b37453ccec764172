#pragma once

#include <QObject>

#include <memory>

class QQmlEngine;
class QQuickView;

namespace halvo {

/// The window with the four tabs, 480 by 360 points. Made when it is first shown; closing it does
/// not end the program. Main thread only.
class SettingsWindow final : public QObject {
    Q_OBJECT

  public:
    /// The engine is the panel's own; it outlives this.
    explicit SettingsWindow(QQmlEngine& engine);
    ~SettingsWindow() override;

    /// Opens the window on the first tab, or brings an open one to the front.
    void show();
    /// The window once it was shown, for pictures and tests; null before.
    QQuickView* window() const { return window_.get(); }

  private Q_SLOTS:
    void takeTitle();

  private:
    QQmlEngine& engine_;
    std::unique_ptr<QQuickView> window_;
};

} // namespace halvo
