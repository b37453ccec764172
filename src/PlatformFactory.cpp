#include "PlatformFactory.h"

#include "qt/ApplicationObject.h"

#include <QCoreApplication>

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

std::unique_ptr<QCoreApplication> makeApplicationObject(int& argc, char** argv) {
    return makeApplicationObject(argc, argv, SystemPlatform::toolkitScreens());
}

bool quitRunningInstance() {
    return SystemPlatform::quitRunning();
}

std::expected<std::unique_ptr<PlatformHost>, PlatformRefusal> makePlatform() {
    return SystemPlatform::create();
}

} // namespace halvo
