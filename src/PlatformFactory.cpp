#include "PlatformFactory.h"

#if defined(__linux__)
#include "linux/LinuxPlatform.h"
using SystemPlatform = halvo::LinuxPlatform;
#elif defined(__APPLE__)
#include "macos/MacPlatform.h"
using SystemPlatform = halvo::MacPlatform;
#else
#error "There is no back end for this system."
#endif

namespace halvo {

void preparePlatform() {
    SystemPlatform::prepareProcess();
}

std::string toolkitScreens() {
    return SystemPlatform::toolkitScreens();
}

bool quitRunningInstance() {
    return SystemPlatform::quitRunning();
}

std::expected<std::unique_ptr<PlatformHost>, PlatformRefusal> makePlatform() {
    return SystemPlatform::create();
}

} // namespace halvo
