#include "macos/MacAppearance.h"

#include "macos/MacColor.h"

#import <AppKit/AppKit.h>

#include <utility>

@interface HalvoAppearanceObserver : NSObject
- (instancetype)initWithChanged:(std::function<void()>)changed;
- (void)colorsChanged:(NSNotification*)notification;
@end

@implementation HalvoAppearanceObserver {
    std::function<void()> _changed;
}
- (instancetype)initWithChanged:(std::function<void()>)changed {
    if ((self = [super init])) _changed = std::move(changed);
    return self;
}
- (void)colorsChanged:(NSNotification*)__unused notification {
    _changed();
}
- (void)observeValueForKeyPath:(NSString*)__unused keyPath
                      ofObject:(id)__unused object
                        change:(NSDictionary*)__unused change
                       context:(void*)__unused context {
    _changed();
}
@end

namespace halvo {

namespace {

NSString* const kAppearanceKey = @"effectiveAppearance";

} // namespace

struct MacAppearance::Observer {
    HalvoAppearanceObserver* object = nil;
};

MacAppearance::MacAppearance(std::function<void()> changed)
    : observer_(std::make_unique<Observer>()) {
    observer_->object = [[HalvoAppearanceObserver alloc] initWithChanged:std::move(changed)];
    [NSNotificationCenter.defaultCenter addObserver:observer_->object
                                           selector:@selector(colorsChanged:)
                                               name:NSSystemColorsDidChangeNotification
                                             object:nil];
    [NSApp addObserver:observer_->object forKeyPath:kAppearanceKey options:0 context:nullptr];
}

MacAppearance::~MacAppearance() {
    [NSApp removeObserver:observer_->object forKeyPath:kAppearanceKey];
    [NSNotificationCenter.defaultCenter removeObserver:observer_->object];
}

SystemAppearance MacAppearance::appearance() const {
    NSAppearanceName name = [NSApp.effectiveAppearance
        bestMatchFromAppearancesWithNames:@[ NSAppearanceNameAqua, NSAppearanceNameDarkAqua ]];
    return {.dark = [name isEqualToString:NSAppearanceNameDarkAqua] == YES,
            .hasPanelMaterial = true,
            .accent = systemAccent()};
}

Color systemAccent() {
    NSColor* color = [NSColor.controlAccentColor colorUsingColorSpace:NSColorSpace.sRGBColorSpace];
    return {color.redComponent, color.greenComponent, color.blueComponent};
}

} // namespace halvo
