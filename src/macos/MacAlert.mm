#include "macos/MacAlert.h"

#include "macos/MacText.h"

#import <AppKit/AppKit.h>

#include <algorithm>

namespace halvo {

std::size_t MacAlert::runModal(AlertStyle style, const std::string& message,
                               const std::string& informativeText,
                               const std::vector<std::string>& buttons) {
    @autoreleasepool {
        NSAlert* alert = [[NSAlert alloc] init];
        alert.alertStyle =
            style == AlertStyle::critical ? NSAlertStyleCritical : NSAlertStyleInformational;
        alert.messageText = makeNSString(message);
        alert.informativeText = makeNSString(informativeText);
        for (const auto& title : buttons)
            [alert addButtonWithTitle:makeNSString(title)];
        // An agent's alert would open behind the frontmost program.
        [NSApp activateIgnoringOtherApps:YES];
        const auto last = std::max<std::ptrdiff_t>(std::ssize(buttons) - 1, 0);
        const auto chosen = [alert runModal] - NSAlertFirstButtonReturn;
        return static_cast<std::size_t>(chosen >= 0 && chosen <= last ? chosen : last);
    }
}

} // namespace halvo
