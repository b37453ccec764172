#pragma once

#include <QObject>

#include <memory>

class QQmlEngine;
class QQuickView;

namespace halvo {

/// The settings window with four tabs, 480 by 360 points. Created when first shown; closing it does
/// not quit the program. Main thread only.
class SettingsWindow final : public QObject {
    Q_OBJECT

  public:
    /// Shares the panel's engine, which outlives this.
    explicit SettingsWindow(QQmlEngine& engine);
    ~SettingsWindow() override;

    /// Opens the window on the first tab, or brings an open one to the front.
    void show();
    /// For pictures and tests; null until first shown.
    QQuickView* window() const { return window_.get(); }

  private Q_SLOTS:
    void takeTitle();

  private:
    QQmlEngine& engine_;
    std::unique_ptr<QQuickView> window_;
};

} // namespace halvo
