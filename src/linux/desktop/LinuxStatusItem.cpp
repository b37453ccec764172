#include "linux/desktop/LinuxStatusItem.h"

#include <QApplication>
#include <QCursor>
#include <QIcon>
#include <QMenu>
#include <QPixmap>
#include <QScreen>
#include <QSystemTrayIcon>

#include <chrono>
#include <utility>

namespace halvo {

namespace {

constexpr double kHeight = 22;
/// A picture's transfer over the bus costs more than drawing it, so only every second tick sends
/// one.
constexpr std::chrono::milliseconds kShortestPicture{50};
constexpr int kUntilTray = 1000; // milliseconds; a running watcher has answered by then

/// A guess until the first click: the end of the desktop's bar.
ScreenRect likelyFrame(ScreenSize size) {
    const auto* screen = QGuiApplication::primaryScreen();
    if (!screen) return {0, 0, size.width, size.height};
    const QRect whole = screen->geometry();
    const QRect work = screen->availableGeometry();
    const bool isBelow = work.top() == whole.top() && work.bottom() < whole.bottom();
    const double y = isBelow ? whole.bottom() + 1 - size.height : whole.top();
    return {whole.right() + 1 - size.width, y, size.width, size.height};
}

} // namespace

LinuxStatusItem::LinuxStatusItem(std::vector<StatusMenu::Entry> entries)
    : menu_(std::move(entries)) {
    placeTimer_.setSingleShot(true);
    connect(&placeTimer_, &QTimer::timeout, this, &LinuxStatusItem::findPlace);
}

LinuxStatusItem::~LinuxStatusItem() = default;

void LinuxStatusItem::show(double length, Draw draw, std::function<void()> action) {
    size_ = {length, kHeight};
    draw_ = std::move(draw);
    action_ = std::move(action);
    notifier_ = std::make_unique<StatusNotifierItem>(QDBusObjectPath(StatusMenu::kPath));
    notifier_->onActivate = [this](QPoint place) { takeClick(place); };
    notifier_->onContextMenu = [this](QPoint place) { showMenu(place); };
    notifier_->onShownChanged = [this] {
        if (notifier_->hasWatcher()) tray_.reset();
        if (!notifier_->isShown()) clicked_.reset();
        shown_.reset();
        setNeedsDisplay();
    };
    placeTimer_.start(kUntilTray);
    setNeedsDisplay();
}

void LinuxStatusItem::hide() {
    placeTimer_.stop();
    tray_.reset();
    notifier_.reset();
    draw_ = nullptr;
    action_ = nullptr;
    shown_.reset();
}

bool LinuxStatusItem::isSeen() const {
    return (notifier_ && notifier_->isShown()) || tray_;
}

bool LinuxStatusItem::isLive() const {
    return isSeen() && shown_ && shown_->kind == StatusPicture::Kind::envelope;
}

std::optional<ScreenRect> LinuxStatusItem::frame() const {
    if (tray_ && tray_->geometry().isValid()) {
        const QRect place = tray_->geometry();
        return ScreenRect{static_cast<double>(place.x()), static_cast<double>(place.y()),
                          static_cast<double>(place.width()), static_cast<double>(place.height())};
    }
    if (!clicked_) return isSeen() ? std::optional(likelyFrame(size_)) : std::nullopt;
    return ScreenRect{clicked_->x() - size_.width / 2, clicked_->y() - size_.height / 2,
                      size_.width, size_.height};
}

void LinuxStatusItem::setNeedsDisplay() {
    if (displayPending_ || !isSeen()) return;
    displayPending_ = true;
    QMetaObject::invokeMethod(this, &LinuxStatusItem::display, Qt::QueuedConnection);
}

void LinuxStatusItem::display() {
    displayPending_ = false;
    if (!draw_ || !isSeen()) return;
    auto picture = draw_(size_);
    if (shown_ == picture || isTooSoon(picture)) return;
    const QSize size(static_cast<int>(size_.width), static_cast<int>(size_.height));
    const auto image = StatusPainter::paint(picture, size, qGuiApp->devicePixelRatio(), tones_);
    const bool same = shown_ && image == image_;
    const bool wasLive = isLive();
    shown_ = std::move(picture);
    shownAt_ = std::chrono::steady_clock::now();
    if (!same) showImage(image);
    if (!wasLive && isLive() && onLive) onLive();
}

/// A moving picture can wait for the next tick; any other is shown at once.
bool LinuxStatusItem::isTooSoon(const StatusPicture& picture) const {
    return isLive() && !tray_ && picture.kind == StatusPicture::Kind::envelope &&
           std::chrono::steady_clock::now() - shownAt_ < kShortestPicture;
}

void LinuxStatusItem::showImage(const QImage& image) {
    image_ = image;
    if (tray_) return tray_->setIcon(QIcon(QPixmap::fromImage(image)));
    notifier_->setPixmaps({NotifierPixmap::of(image)});
}

void LinuxStatusItem::setTones(const StatusTones& tones) {
    if (tones == std::exchange(tones_, tones)) return;
    shown_.reset();
    setNeedsDisplay();
}

void LinuxStatusItem::click() {
    if (const auto action = action_) action();
}

void LinuxStatusItem::takeClick(QPoint place) {
    // Some desktops do not report the place.
    clicked_ = place.isNull() ? QCursor::pos() : place;
    click();
}

void LinuxStatusItem::showMenu(QPoint place) {
    if (!popup_) {
        popup_ = std::make_unique<QMenu>();
        for (const auto& entry : menu_.entries())
            popup_->addAction(entry.label, this, entry.chosen);
    }
    qsizetype index = 0;
    for (auto* action : popup_->actions()) {
        const auto& entry = menu_.entries()[static_cast<std::size_t>(index++)];
        action->setCheckable(entry.isMarked != nullptr);
        action->setChecked(entry.isMarked && entry.isMarked());
    }
    popup_->popup(place.isNull() ? QCursor::pos() : place);
}

void LinuxStatusItem::findPlace() {
    if (!notifier_ || notifier_->hasWatcher()) return;
    if (QSystemTrayIcon::isSystemTrayAvailable()) return useTray();
    click(); // the panel itself, as a window
}

void LinuxStatusItem::useTray() {
    tray_ = std::make_unique<QSystemTrayIcon>();
    tray_->setToolTip(QStringLiteral("Halvo"));
    connect(tray_.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Context) return showMenu(QCursor::pos());
                takeClick(QCursor::pos());
            });
    shown_.reset();
    display();
    tray_->show();
}

} // namespace halvo
