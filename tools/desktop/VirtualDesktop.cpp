#include "desktop/VirtualDesktop.h"
#include "platform/VirtualOutput.h"

#include <QPixmap>
#include <QScreen>
#include <QThread>

#include <csignal>
#include <stdexcept>
#include <utility>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace halvo::desktop {

using session::PrivateSession;

namespace {

template <typename T> T orThrow(std::expected<T, std::string> made) {
    if (!made) throw std::runtime_error(made.error());
    return std::move(*made);
}

QRect boundsOfDifference(const QImage& one, const QImage& other) {
    QRect bounds;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            if (one.pixel(x, y) != other.pixel(x, y)) bounds |= QRect(x, y, 1, 1);
        }
    }
    return bounds;
}

/// A mouse and a keyboard. Once they are taken away, the screen has done all that they did.
class InputHardware {
  public:
    explicit InputHardware(const std::string& display)
        : connection_(xcb_connect(display.c_str(), nullptr)),
          root_(xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root) {}
    ~InputHardware() {
        std::free(
            xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        xcb_disconnect(connection_);
    }
    InputHardware(const InputHardware&) = delete;
    InputHardware& operator=(const InputHardware&) = delete;

    void send(int kind, int detail, QPoint at = {}) const {
        xcb_test_fake_input(connection_, static_cast<std::uint8_t>(kind),
                            static_cast<std::uint8_t>(detail), XCB_CURRENT_TIME, root_,
                            static_cast<std::int16_t>(at.x()), static_cast<std::int16_t>(at.y()),
                            0);
        xcb_flush(connection_);
    }

  private:
    xcb_connection_t* connection_;
    xcb_window_t root_;
};

} // namespace

VirtualDesktop::VirtualDesktop(Programs programs) : programs_(std::move(programs)) {
    session_ = orThrow(PrivateSession::create());
    startScreen();
    session_->setEnvironmentOfThisProcess();
    qputenv("DISPLAY", display_.c_str());
    qputenv("QT_QPA_PLATFORM", "xcb");
    toolkit_ = std::make_unique<QGuiApplication>(argc_, argv_);
    tray_ = std::make_unique<TrayHost>();
    portal_ = std::make_unique<AppearancePortal>();
    bare_ = grab();
}

VirtualDesktop::~VirtualDesktop() {
    application_.reset();
    driver_.reset();
    portal_.reset();
    tray_.reset();
    toolkit_.reset(); // before its screen ends
}

void VirtualDesktop::startScreen() {
    screen_ = orThrow(session_->spawn(
        {"Xvfb", "-displayfd", "1", "-screen", "0", "1280x900x24", "-nolisten", "tcp"}));
    if (!PrivateSession::waitFor([this] { return screen_->standardOutput().ends_with('\n'); })) {
        throw std::runtime_error("no virtual screen: " + screen_->standardError());
    }
    display_.assign(1, ':').append(screen_->standardOutput());
    display_.pop_back();
}

void VirtualDesktop::startDriver() {
    driver_ = orThrow(session_->spawn({programs_.driver}));
    if (!waitFor([this] { return !session_->volume(kVirtualDeviceUID).empty(); })) {
        throw std::runtime_error("no virtual device: " + driver_->standardError());
    }
}

void VirtualDesktop::startApplication() {
    application_ = orThrow(
        session_->spawn({programs_.application},
                        {"HALVO_DRIVER_BUNDLE=" + programs_.driverBundle, "DISPLAY=" + display_}));
}

bool VirtualDesktop::waitForItem() {
    return waitFor([this] { return tray_->hasItem() && tray_->newIcons() > 0; });
}

void VirtualDesktop::stopApplication() {
    (void)application_->signal(SIGTERM);
    (void)application_->wait(PrivateSession::kPatience);
    tray_->disappear();
    tray_->appear();
}

void VirtualDesktop::press(QPoint place, int button, std::chrono::milliseconds held) {
    const InputHardware hardware(display_);
    hardware.send(XCB_MOTION_NOTIFY, 0, place);
    hardware.send(XCB_BUTTON_PRESS, button);
    if (held > std::chrono::milliseconds::zero()) rest(held);
    hardware.send(XCB_BUTTON_RELEASE, button);
}

void VirtualDesktop::pressKey(int key) {
    const InputHardware hardware(display_);
    hardware.send(XCB_KEY_PRESS, key);
    hardware.send(XCB_KEY_RELEASE, key);
}

void VirtualDesktop::clickItem(QPoint place, std::chrono::milliseconds held) {
    press(place, 1, held);
    rest(std::chrono::milliseconds(60)); // as long as a person's click
    tray_->activate(place.x(), place.y());
}

QImage VirtualDesktop::grab() const {
    return QGuiApplication::primaryScreen()->grabWindow().toImage().convertToFormat(
        QImage::Format_RGB32);
}

QRect VirtualDesktop::drawnArea() const {
    return boundsOfDifference(grab(), bare_);
}

bool VirtualDesktop::waitFor(const std::function<bool()>& condition,
                             std::chrono::milliseconds deadline) {
    return PrivateSession::waitFor(
        [&] {
            QCoreApplication::processEvents();
            return condition();
        },
        deadline);
}

void VirtualDesktop::rest(std::chrono::milliseconds time) {
    (void)waitFor([] { return false; }, time);
}

} // namespace halvo::desktop
