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

/// Halvo's item where the desktop has a place for it: a StatusNotifierItem, else an XEmbed icon
/// while no watcher is there, else none. Draws in a later turn of the main loop, only what differs
/// from what is shown, and only while somebody can see it. Main thread only.
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

    /// Whether somebody can see a picture that moves with the sound.
    bool isLive() const;
    /// Called when such a picture is first shown.
    std::function<void()> onLive;

    void setTones(const StatusTones& tones);
    /// As if somebody had clicked the item.
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
    QTimer placeTimer_; ///< until it is clear that there is no watcher
    Draw draw_;
    std::function<void()> action_;
    ScreenSize size_;
    std::optional<QPoint> clicked_; ///< the place of the last click
    StatusTones tones_;
    bool displayPending_ = false;
    std::optional<StatusPicture> shown_; ///< what the desktop has; nothing: to be drawn anew
    std::chrono::steady_clock::time_point shownAt_;
    QImage image_;
};

} // namespace halvo
