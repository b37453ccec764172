#include "macos/MacStatusItem.h"

#include "macos/MacColor.h"
#include "macos/MacScreen.h"
#include "platform/MainQueue.h"
#include "qt/StatusPainter.h"

#include <utility>

/// The picture inside the item's button. Passes presses on to the button.
@interface HalvoStatusEQView : NSImageView
@end

@implementation HalvoStatusEQView
- (NSView*)hitTest:(NSPoint)__unused point {
    return nil;
}
@end

/// Forwards the button's action and the item becoming visible.
@interface HalvoStatusTarget : NSObject
- (instancetype)initWithPressed:(std::function<void()>)pressed shown:(std::function<void()>)shown;
- (void)togglePopover:(id)sender;
- (void)occlusionChanged:(NSNotification*)notification;
@end

@implementation HalvoStatusTarget {
    std::function<void()> _pressed;
    std::function<void()> _shown;
}
- (instancetype)initWithPressed:(std::function<void()>)pressed shown:(std::function<void()>)shown {
    if ((self = [super init])) {
        _pressed = std::move(pressed);
        _shown = std::move(shown);
    }
    return self;
}
- (void)togglePopover:(id)__unused sender {
    const auto pressed = _pressed; // it may remove the item
    pressed();
}
- (void)occlusionChanged:(NSNotification*)__unused notification {
    _shown();
}
@end

namespace halvo {

struct MacStatusItem::Parts {
    ~Parts() {
        [NSNotificationCenter.defaultCenter removeObserver:target];
        if (item) [NSStatusBar.systemStatusBar removeStatusItem:item];
    }

    bool isSeen() const {
        return (item.button.window.occlusionState & NSWindowOcclusionStateVisible) != 0;
    }
    bool isLive() const {
        return isSeen() && shown && shown->kind == StatusPicture::Kind::envelope;
    }
    /// Whether a picture that moves with the sound has just become visible.
    bool display();

    NSStatusItem* item = nil;
    HalvoStatusEQView* view = nil;
    HalvoStatusTarget* target = nil;
    Draw draw;
    bool displayPending = false;
    std::optional<StatusPicture> shown; ///< nothing: must be redrawn
};

bool MacStatusItem::Parts::display() {
    displayPending = false;
    if (!isSeen()) return false;
    const NSSize size = view.bounds.size;
    auto picture = draw({size.width, size.height});
    if (shown == picture) return false;
    const bool wasLive = isLive();
    const qreal scale = item.button.window.backingScaleFactor;
    const QSize points(static_cast<int>(size.width), static_cast<int>(size.height));
    const QImage drawn =
        StatusPainter::paint(picture, points, scale, {Qt::black, toQColor(systemAccent())});
    CGImageRef pixels = drawn.toCGImage();
    NSImage* image = [[NSImage alloc] initWithCGImage:pixels size:size];
    CGImageRelease(pixels);
    [image setTemplate:!picture.color]; // drawn in the menu bar's label colour
    view.image = image;
    shown = std::move(picture);
    return !wasLive && isLive();
}

MacStatusItem::MacStatusItem(MainQueue& queue) : queue_(queue) {}

MacStatusItem::~MacStatusItem() = default;

void MacStatusItem::show(double length, Draw draw, std::function<void()> action) {
    parts_ = std::make_shared<Parts>();
    parts_->draw = std::move(draw);
    parts_->item = [NSStatusBar.systemStatusBar statusItemWithLength:length];
    NSStatusBarButton* button = parts_->item.button;
    parts_->view = [[HalvoStatusEQView alloc] initWithFrame:button.bounds];
    parts_->view.autoresizingMask = NSViewWidthSizable | NSViewHeightSizable;
    parts_->view.imageScaling = NSImageScaleNone;
    [button addSubview:parts_->view];
    button.accessibilityLabel = @"Halvo";
    parts_->target = [[HalvoStatusTarget alloc] initWithPressed:std::move(action)
                                                          shown:[this] { setNeedsDisplay(); }];
    button.target = parts_->target;
    button.action = @selector(togglePopover:);
    [NSNotificationCenter.defaultCenter addObserver:parts_->target
                                           selector:@selector(occlusionChanged:)
                                               name:NSWindowDidChangeOcclusionStateNotification
                                             object:button.window];
    setNeedsDisplay();
}

void MacStatusItem::hide() {
    parts_.reset();
}

std::optional<ScreenRect> MacStatusItem::frame() const {
    NSStatusBarButton* button = parts_ ? parts_->item.button : nil;
    if (!button.window) return std::nullopt;
    return toScreenRect([button.window convertRectToScreen:[button convertRect:button.bounds
                                                                        toView:nil]]);
}

void MacStatusItem::setNeedsDisplay() {
    if (!parts_ || std::exchange(parts_->displayPending, true)) return;
    queue_.async([this, weak = std::weak_ptr(parts_)] {
        const auto parts = weak.lock();
        if (parts && parts->display() && onLive) onLive();
    });
}

bool MacStatusItem::isLive() const {
    return parts_ && parts_->isLive();
}

void MacStatusItem::appearanceChanged() {
    if (!parts_) return;
    parts_->shown.reset();
    setNeedsDisplay();
}

} // namespace halvo
