#pragma once

#include "macos/CoreFoundation.h"

#import <Foundation/Foundation.h>

namespace halvo {

/// A UTF-8 text as an object; empty when it is no UTF-8. Any thread.
inline NSString* makeNSString(const std::string& text) {
    const auto made = makeCFString(text);
    return made ? CFBridgingRelease(CFRetain(made.get())) : @"";
}

} // namespace halvo
