#pragma once

#include "macos/CoreFoundation.h"

#import <Foundation/Foundation.h>

namespace halvo {

/// A UTF-8 text as an NSString; empty when it is not valid UTF-8. Any thread.
inline NSString* makeNSString(const std::string& text) {
    const auto made = makeCFString(text);
    return made ? CFBridgingRelease(CFRetain(made.get())) : @"";
}

} // namespace halvo
