#include "macos/MacScriptRunner.h"

#include "macos/MacText.h"

#import <Foundation/Foundation.h>

namespace halvo {

namespace {

ScriptError errorOf(NSDictionary<NSString*, id>* information) {
    NSNumber* number = information[NSAppleScriptErrorNumber]; // absent: 0
    return {number.intValue, textOf((__bridge CFStringRef)information.description).value_or("")};
}

} // namespace

std::expected<std::optional<std::string>, ScriptError>
MacScriptRunner::run(const std::string& source) {
    const std::scoped_lock lock(lock_);
    @autoreleasepool {
        NSString* text = makeNSString(source);
        NSAppleScript* script = [[NSAppleScript alloc] initWithSource:text];
        if (!script) return std::nullopt;
        NSDictionary<NSString*, id>* error = nil;
        NSAppleEventDescriptor* result = [script executeAndReturnError:&error];
        if (error) return std::unexpected(errorOf(error));
        return textOf((__bridge CFStringRef)result.stringValue);
    }
}

} // namespace halvo
