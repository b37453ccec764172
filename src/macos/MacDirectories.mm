#include "macos/MacDirectories.h"

#import <Foundation/Foundation.h>

namespace halvo {

namespace {

namespace fs = std::filesystem;

/// Where the presets are.
fs::path dataDirectory() {
    return applicationSupportDirectory().value_or(fs::temp_directory_path()) / "Halvo";
}

} // namespace

std::optional<fs::path> applicationSupportDirectory() {
    NSString* path =
        NSSearchPathForDirectoriesInDomains(NSApplicationSupportDirectory, NSUserDomainMask, YES)
            .firstObject;
    if (path.length == 0) return std::nullopt;
    return fs::path(path.fileSystemRepresentation);
}

SessionFiles sessionFiles() {
    const fs::path temporary(NSTemporaryDirectory().fileSystemRepresentation);
    return {{dataDirectory() / "raised-devices.json", temporary / "halvo-raised-devices.json"},
            dataDirectory() / "session.lock"};
}

} // namespace halvo
