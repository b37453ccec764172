#include "macos/MacDesktop.h"

#include "platform/Application.h"
#include "qt/QtMainQueue.h"

#import <AppKit/AppKit.h>

namespace halvo {

namespace {

constexpr NSTimeInterval kLongestQuit = 10; // seconds
constexpr NSTimeInterval kLook = 0.05;

NSArray<NSRunningApplication*>* others() {
    NSString* identifier = NSBundle.mainBundle.bundleIdentifier;
    if (!identifier) return @[];
    NSRunningApplication* self = NSRunningApplication.currentApplication;
    NSPredicate* isOther =
        [NSPredicate predicateWithBlock:^(NSRunningApplication* application, NSDictionary*) {
          return static_cast<BOOL>(application.processIdentifier != self.processIdentifier);
        }];
    return [[NSRunningApplication runningApplicationsWithBundleIdentifier:identifier]
        filteredArrayUsingPredicate:isOther];
}

} // namespace

MacDesktop::MacDesktop(QtMainQueue& queue, Application& application)
    : panelWindow_(queue, [&application] { application.terminate(); }), statusItem_(queue),
      appearance_([this] { applyAppearance(); }) {
    [NSApp setActivationPolicy:NSApplicationActivationPolicyAccessory];
    applyAppearance();
    queue.setWatch([this] { return panelWindow_.isVisible() || statusItem_.isLive(); });
    panelWindow_.onShown = [&queue] { queue.stir(); };
    statusItem_.onLive = [&queue] { queue.stir(); };
}

void MacDesktop::applyAppearance() {
    panelWindow_.setSystemAppearance(appearance_.appearance());
    statusItem_.appearanceChanged();
}

bool MacDesktop::quitOthers() {
    NSDate* end = [NSDate dateWithTimeIntervalSinceNow:kLongestQuit];
    for (NSRunningApplication* application in others())
        [application terminate];
    while (others().count > 0 && end.timeIntervalSinceNow > 0) {
        [NSRunLoop.currentRunLoop runUntilDate:[NSDate dateWithTimeIntervalSinceNow:kLook]];
    }
    return others().count == 0;
}

} // namespace halvo
