#include "qt/QtPanelWindow.h"

#include <QCursor>
#include <QGuiApplication>
#include <QPainterPath>
#include <QQuickView>
#include <QRegion>
#include <QScreen>
#include <QTimer>

#include <cmath>
#include <utility>

namespace halvo {

namespace {

constexpr int kUntilPrepared = 500; // milliseconds; after the start, not during it
constexpr int kRadius = 10;
constexpr int kUntilReported = 500; // milliseconds; the tray reports a click after its release

ScreenRect toScreenRect(const QRect& rect) {
    return {static_cast<double>(rect.x()), static_cast<double>(rect.y()),
            static_cast<double>(rect.width()), static_cast<double>(rect.height())};
}

/// With its frame, so that the title bar stays on the screen.
void center(QWindow& window) {
    QRect frame(QPoint(0, 0), window.size());
    frame.moveCenter(window.screen()->availableGeometry().center());
    window.setFramePosition(frame.topLeft());
}

Qt::WindowFlags flagsOf(PanelStyle style) {
    if (style == PanelStyle::window) {
        return Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
               Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint;
    }
    return Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
}

} // namespace

QtPanelWindow::QtPanelWindow(Desktop desktop) : desktop_(std::move(desktop)) {
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this,
            [this](Qt::ApplicationState state) {
                if (state != Qt::ApplicationActive) takeFocusLoss();
            });
    move_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&move_, &QVariantAnimation::valueChanged, this, [this](const QVariant& frame) {
        if (isMoving()) place(frame.toRect()); // not while its ends are set
    });
}

QtPanelWindow::~QtPanelWindow() = default;

void QtPanelWindow::setContent(const PopoverServices& services, PanelEvents events) {
    services_.emplace(services);
    events_ = std::move(events);
    QTimer::singleShot(kUntilPrepared, this, [this] {
        if (services_) prepare();
    });
}

void QtPanelWindow::removeContent() {
    orderOut();
    settingsWindow_.reset();
    content_.reset();
    window_.reset();
    services_.reset();
    events_ = {};
}

void QtPanelWindow::prepare() {
    if (content_ || !services_) return;
    PanelContent::prepareRenderer();
    content_ =
        std::make_unique<PanelContent>(*services_, PanelHost{.mainQueue = desktop_.mainQueue,
                                                             .volumeTaper = desktop_.volumeTaper,
                                                             .quit = desktop_.quit});
    content_->setSystemAppearance(appearance_);
    content_->setShown(false);
    settingsWindow_ = std::make_unique<SettingsWindow>(content_->engine());
    window_ = std::make_unique<QQuickWindow>();
    window_->setTitle(QStringLiteral("Halvo"));
    QSurfaceFormat format = window_->format();
    format.setAlphaBufferSize(8);
    window_->setFormat(format);
    window_->setFlags(flagsOf(style_));
    content_->attach(*window_);
    connect(content_.get(), &PanelContent::sizeChanged, this, [this] {
        if (events_.onSizeChange) events_.onSizeChange();
    });
    connect(content_.get(), &PanelContent::closeRequested, this, [this] {
        if (events_.onClose) events_.onClose();
    });
    connect(content_.get(), &PanelContent::settingsWindowRequested, this,
            &QtPanelWindow::showSettingsWindow);
    window_->resize(content_->fittingSize());
    window_->create();
}

ScreenSize QtPanelWindow::fittingSize() {
    prepare();
    if (!content_) return {};
    const QSize size = content_->fittingSize();
    return {static_cast<double>(size.width()), static_cast<double>(size.height())};
}

ScreenArea QtPanelWindow::screenAt(ScreenPoint place) const {
    const QPoint point(static_cast<int>(std::floor(place.x)),
                       static_cast<int>(std::floor(place.y)));
    const auto* screen = QGuiApplication::screenAt(point);
    if (!screen) screen = QGuiApplication::primaryScreen();
    if (!screen) return {};
    return {toScreenRect(screen->geometry()), toScreenRect(screen->availableGeometry())};
}

void QtPanelWindow::orderFront(PanelStyle style) {
    prepare();
    if (!window_) return;
    if (style != std::exchange(style_, style)) {
        window_->setFlags(flagsOf(style));
        if (style == PanelStyle::window) center(*window_);
    }
    content_->setFramed(style_ == PanelStyle::window);
    isMasked_ = style_ == PanelStyle::hanging && !desktop_.hasCompositor();
    roundCorners();
    setShown(true);
    window_->show();
    window_->raise();
    window_->requestActivate();
}

void QtPanelWindow::orderOut() {
    if (!window_) return;
    move_.stop();
    setShown(false);
    window_->hide();
}

void QtPanelWindow::setShown(bool shown) {
    content_->setShown(shown);
    if (shown && onShown) onShown();
}

ScreenRect QtPanelWindow::frame() const {
    if (isMoving()) return toScreenRect(move_.endValue().toRect());
    return window_ ? toScreenRect(window_->geometry()) : ScreenRect();
}

void QtPanelWindow::setFrame(const ScreenRect& frame, PanelMove move) {
    if (!window_) return;
    const QRect target(
        QPoint(static_cast<int>(std::lround(frame.x)), static_cast<int>(std::lround(frame.y))),
        QSize(static_cast<int>(frame.width), static_cast<int>(frame.height)));
    if (isMoving() && move_.endValue().toRect() == target) return;
    move_.stop();
    if (!isAnimated(move)) return place(target);
    move_.setDuration(content_->animationDuration());
    move_.setStartValue(window_->geometry());
    move_.setEndValue(target);
    move_.start();
}

bool QtPanelWindow::isAnimated(PanelMove move) const {
    return move == PanelMove::animated && !(content_ && content_->isMoving());
}

void QtPanelWindow::place(const QRect& frame) {
    if (style_ == PanelStyle::window && window_->isVisible()) {
        window_->resize(frame.size());
    } else {
        window_->setGeometry(frame);
    }
    roundCorners();
}

void QtPanelWindow::roundCorners() {
    if (!isMasked_) {
        if (!window_->mask().isEmpty()) window_->setMask({});
        return;
    }
    QPainterPath path;
    path.addRoundedRect(QRectF(QPointF(0, 0), window_->size()), kRadius, kRadius);
    window_->setMask(QRegion(path.toFillPolygon().toPolygon()));
}

Subscription
QtPanelWindow::monitorOutsidePresses(std::function<void(std::optional<ScreenPoint>)> pressed) {
    pressed_ = std::move(pressed);
    presses_ = desktop_.watchPresses([this] { takePress(); }, [this] { takeRelease(); });
    return Subscription([this] {
        pressed_ = nullptr;
        if (!isPressed_) presses_.reset(); // else when it is released
    });
}

void QtPanelWindow::takeRelease() {
    isPressed_ = false;
    sinceRelease_.start();
    if (!pressed_) presses_.reset();
}

bool QtPanelWindow::isPressUnderWay() const {
    return isPressed_ || (sinceRelease_.isValid() && sinceRelease_.elapsed() < kUntilReported);
}

void QtPanelWindow::takePress() {
    isPressed_ = true;
    const QPoint place = QCursor::pos();
    if (!pressed_ || content_->menuContains(place)) return;
    content_->closeMenus();
    const auto pressed = pressed_; // it may cancel this very subscription
    pressed(ScreenPoint{static_cast<double>(place.x()), static_cast<double>(place.y())});
}

/// Only where presses elsewhere are not heard.
void QtPanelWindow::takeFocusLoss() {
    if (presses_ || !pressed_) return;
    const auto pressed = pressed_; // it may end its own monitor
    pressed(std::nullopt);
}

void QtPanelWindow::setSystemAppearance(const SystemAppearance& appearance) {
    appearance_ = appearance;
    if (content_) content_->setSystemAppearance(appearance);
}

void QtPanelWindow::showSettingsWindow() {
    prepare();
    if (settingsWindow_) settingsWindow_->show();
}

QQuickWindow* QtPanelWindow::settingsWindow() const {
    return settingsWindow_ ? settingsWindow_->window() : nullptr;
}

} // namespace halvo
