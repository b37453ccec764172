#include "macos/MacPanelWindow.h"

#include "macos/MacScreen.h"

#include <utility>

@interface HalvoStatusPanel : NSPanel
@end

@implementation HalvoStatusPanel
- (BOOL)canBecomeKeyWindow {
    return YES;
}
@end

namespace halvo {

namespace {

constexpr double kCornerRadius = 10;

/// Presses and releases in other programs.
std::shared_ptr<void> watchPresses(std::function<void()> pressed, std::function<void()> released) {
    constexpr NSEventMask kPresses = NSEventMaskLeftMouseDown | NSEventMaskRightMouseDown;
    constexpr NSEventMask kReleases = NSEventMaskLeftMouseUp | NSEventMaskRightMouseUp;
    id token =
        [NSEvent addGlobalMonitorForEventsMatchingMask:kPresses | kReleases
                                               handler:^(NSEvent* event) {
                                                 const auto mask = NSEventMaskFromType(event.type);
                                                 (mask & kPresses) != 0 ? pressed() : released();
                                               }];
    if (!token) return nullptr;
    return {const_cast<void*>(CFBridgingRetain(token)),
            [](void* monitor) { [NSEvent removeMonitor:CFBridgingRelease(monitor)]; }};
}

NSPanel* makeStatusPanel(NSRect content) {
    NSPanel* panel =
        [[HalvoStatusPanel alloc] initWithContentRect:content
                                            styleMask:NSWindowStyleMaskNonactivatingPanel
                                              backing:NSBackingStoreBuffered
                                                defer:NO];
    panel.movable = NO;
    panel.backgroundColor = NSColor.clearColor;
    panel.opaque = NO;
    panel.hasShadow = YES;
    panel.level = CGShieldingWindowLevel();
    panel.collectionBehavior = NSWindowCollectionBehaviorCanJoinAllSpaces |
                               NSWindowCollectionBehaviorStationary |
                               NSWindowCollectionBehaviorFullScreenAuxiliary;
    panel.floatingPanel = YES;
    panel.hidesOnDeactivate = NO; // the application hides it
    panel.releasedWhenClosed = NO;
    return panel;
}

NSView* makeBackground(NSRect frame) {
    NSVisualEffectView* effect = [[NSVisualEffectView alloc] initWithFrame:frame];
    effect.material = NSVisualEffectMaterialPopover;
    effect.state = NSVisualEffectStateActive;
    effect.blendingMode = NSVisualEffectBlendingModeBehindWindow;
    effect.wantsLayer = YES;
    effect.layer.cornerRadius = kCornerRadius;
    effect.layer.masksToBounds = YES;
    effect.autoresizingMask = NSViewWidthSizable | NSViewHeightSizable;
    return effect;
}

} // namespace

struct MacPanelWindow::Parts {
    ~Parts() {
        [panel orderOut:nil];
        [hostingView removeFromSuperview];
    }

    NSPanel* panel = nil;
    NSView* hostingView = nil; ///< Qt's view, which draws the QML views
};

MacPanelWindow::MacPanelWindow(MainQueue& queue, std::function<void()> quit)
    : QtPanelWindow({.mainQueue = queue,
                     .volumeTaper = VolumeTaper::identity,
                     .quit = std::move(quit),
                     .watchPresses = watchPresses,
                     .hasCompositor = [] { return true; }}) {}

MacPanelWindow::~MacPanelWindow() = default;

bool MacPanelWindow::makePanel() {
    if (parts_) return true;
    prepare();
    if (!window()) return false;
    const ScreenSize size = fittingSize();
    const NSRect frame = NSMakeRect(0, 0, size.width, size.height);
    parts_ = std::make_unique<Parts>();
    parts_->panel = makeStatusPanel(frame);
    NSView* background = makeBackground(frame);
    parts_->hostingView = (__bridge NSView*)reinterpret_cast<void*>(window()->winId());
    parts_->hostingView.frame = background.bounds;
    parts_->hostingView.autoresizingMask = NSViewWidthSizable | NSViewHeightSizable;
    parts_->hostingView.wantsLayer = YES;
    parts_->hostingView.layer.backgroundColor = NSColor.clearColor.CGColor;
    [background addSubview:parts_->hostingView];
    parts_->panel.contentView = background;
    return true;
}

void MacPanelWindow::removeContent() {
    orderOut();
    parts_.reset(); // before the view's owner is destroyed
    QtPanelWindow::removeContent();
}

bool MacPanelWindow::isVisible() const {
    return parts_ && parts_->panel.visible;
}

void MacPanelWindow::orderFront(PanelStyle style) {
    if (!makePanel()) return;
    setShown(true);
    if (style == PanelStyle::window) [parts_->panel center];
    window()->show();
    [NSApp activateIgnoringOtherApps:YES];
    [parts_->panel orderFrontRegardless];
    [parts_->panel makeKeyWindow];
    [parts_->panel makeFirstResponder:parts_->hostingView];
}

void MacPanelWindow::orderOut() {
    if (!parts_) return;
    setShown(false);
    [parts_->panel orderOut:nil];
    window()->hide();
}

ScreenRect MacPanelWindow::frame() const {
    return parts_ ? toScreenRect(parts_->panel.frame) : ScreenRect();
}

void MacPanelWindow::setFrame(const ScreenRect& frame, PanelMove move) {
    if (!makePanel()) return;
    [parts_->panel setFrame:toNSRect(frame) display:YES animate:isAnimated(move)];
}

} // namespace halvo
