#include "platform/qt/ApplicationObject.h"

#include <QApplication>

namespace halvo {

namespace {

constexpr const char* kPlatform = "QT_QPA_PLATFORM";

/// The toolkit's back ends to try in turn. X11 first: on Wayland a panel cannot be placed. The last
/// one always works, where the others would end the program.
QByteArray platforms() {
    QByteArray list;
    if (!qEnvironmentVariableIsEmpty("DISPLAY")) list += "xcb;";
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) list += "wayland;";
    return list.isEmpty() ? list : list + "offscreen";
}

} // namespace

std::unique_ptr<QCoreApplication> makeApplicationObject(int& argc, char** argv) {
    const auto list = platforms();
    if (list.isEmpty()) return std::make_unique<QCoreApplication>(argc, argv);
    const bool chosen = qEnvironmentVariableIsSet(kPlatform);
    if (!chosen) qputenv(kPlatform, list);
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
