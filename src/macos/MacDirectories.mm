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

fs::path raisedDevicesPath() {
    return dataDirectory() / "raised-devices.json";
}

fs::path spareRaisedDevicesPath() {
    return fs::path(NSTemporaryDirectory().fileSystemRepresentation) / "halvo-raised-devices.json";
}

fs::path sessionLockPath() {
    return dataDirectory() / "session.lock";
}

} // namespace halvo
