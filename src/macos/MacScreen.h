#pragma once

#include "platform/ScreenRect.h"

#import <AppKit/AppKit.h>

namespace halvo {

// The system counts upwards from the lower left corner of the first screen, Halvo and Qt downwards
// from its upper left one. Main thread only.

inline double firstScreenHeight() {
    return NSScreen.screens.firstObject.frame.size.height;
}

inline ScreenRect toScreenRect(NSRect rect) {
    return {rect.origin.x, firstScreenHeight() - NSMaxY(rect), rect.size.width, rect.size.height};
}

inline NSRect toNSRect(const ScreenRect& rect) {
    return NSMakeRect(rect.x, firstScreenHeight() - rect.bottom(), rect.width, rect.height);
}

} // namespace halvo
