#include "qt/ApplicationObject.h"

#include <QApplication>

namespace halvo {

namespace {

constexpr const char* kPlatform = "QT_QPA_PLATFORM";

} // namespace

std::unique_ptr<QCoreApplication> makeApplicationObject(int& argc, char** argv,
                                                        const std::string& screens) {
    if (screens.empty()) return std::make_unique<QCoreApplication>(argc, argv);
    const bool chosen = qEnvironmentVariableIsSet(kPlatform);
    if (!chosen) qputenv(kPlatform, screens.c_str());
    auto application = std::make_unique<QApplication>(argc, argv);
    if (!chosen) qunsetenv(kPlatform); // programs that this one starts choose for themselves
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setApplicationDisplayName(QStringLiteral("Halvo"));
    QApplication::setDesktopFileName(QStringLiteral("org.halvo.Halvo"));
    return application;
}

bool hasScreen() {
    return qobject_cast<QApplication*>(QCoreApplication::instance()) &&
           QGuiApplication::platformName() != QStringLiteral("offscreen");
}

} // namespace halvo
