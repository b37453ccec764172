#pragma once

#include "linux/desktop/StatusMenu.h"
#include "linux/desktop/StatusNotifierItem.h"
#include "platform/StatusItem.h"
#include "qt/StatusPainter.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QMenu;
class QSystemTrayIcon;

namespace halvo {

/// Halvo's tray icon: a StatusNotifierItem, without a watcher an XEmbed icon, without a tray none.
/// Draws in a later iteration of the main loop, only changes, and only while visible. Main thread
/// only.
class LinuxStatusItem final : public QObject, public StatusItem {
    Q_OBJECT

  public:
    /// `entries` make the context menu.
    explicit LinuxStatusItem(std::vector<StatusMenu::Entry> entries);
    ~LinuxStatusItem() override;

    void show(double length, Draw draw, std::function<void()> action) override;
    void hide() override;
    std::optional<ScreenRect> frame() const override;
    void setNeedsDisplay() override;

    /// Whether a picture that moves with the sound is visible.
    bool isLive() const;
    /// Called when such a picture is first shown.
    std::function<void()> onLive;

    void setTones(const StatusTones& tones);
    /// As if the item had been clicked.
    void click();

  private:
    bool isSeen() const;
    void display();
    bool isTooSoon(const StatusPicture& picture) const;
    void showImage(const QImage& image);
    void takeClick(QPoint place);
    void showMenu(QPoint place);
    void findPlace();
    void useTray();

    StatusMenu menu_;
    std::unique_ptr<StatusNotifierItem> notifier_;
    std::unique_ptr<QMenu> popup_;
    std::unique_ptr<QSystemTrayIcon> tray_;
    QTimer placeTimer_; ///< ends the wait for a watcher
    Draw draw_;
    std::function<void()> action_;
    ScreenSize size_;
    std::optional<QPoint> clicked_; ///< the place of the last click
    StatusTones tones_;
    bool displayPending_ = false;
    std::optional<StatusPicture> shown_; ///< what the desktop shows; nothing: must be redrawn
    std::chrono::steady_clock::time_point shownAt_;
    QImage image_;
};

} // namespace halvo
