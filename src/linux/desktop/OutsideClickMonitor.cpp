#include "linux/desktop/OutsideClickMonitor.h"

#include <QSocketNotifier>

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace halvo {

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T> using Reply = std::unique_ptr<T, Free>;

struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using Handle = std::unique_ptr<xcb_connection_t, Disconnect>;

bool hasRawEvents(xcb_connection_t* connection) {
    const auto* extension = xcb_get_extension_data(connection, &xcb_input_id);
    if (!extension || !extension->present) return false;
    const auto cookie = xcb_input_xi_query_version(connection, 2, 2);
    const Reply<xcb_input_xi_query_version_reply_t> version(
        xcb_input_xi_query_version_reply(connection, cookie, nullptr));
    // Since 2.1, raw events are also sent while another program has grabbed the mouse.
    return version && (version->major_version > 2 ||
                       (version->major_version == 2 && version->minor_version >= 1));
}

void selectPresses(xcb_connection_t* connection) {
    const struct {
        xcb_input_event_mask_t head;
        std::uint32_t bits;
    } mask = {{XCB_INPUT_DEVICE_ALL_MASTER, 1},
              XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS |
                  XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE};
    for (auto roots = xcb_setup_roots_iterator(xcb_get_setup(connection)); roots.rem > 0;
         xcb_screen_next(&roots)) {
        xcb_input_xi_select_events(connection, roots.data->root, 1, &mask.head);
    }
    xcb_flush(connection);
}

enum class Change { none, press, release };

Change changeIn(const xcb_generic_event_t& event) {
    constexpr std::uint32_t kLeft = 1;
    constexpr std::uint32_t kRight = 3;
    if ((event.response_type & 0x7FU) != XCB_GE_GENERIC) return Change::none;
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    const bool isPress = generic.event_type == XCB_INPUT_RAW_BUTTON_PRESS;
    if (!isPress && generic.event_type != XCB_INPUT_RAW_BUTTON_RELEASE) return Change::none;
    const auto button = reinterpret_cast<const xcb_input_raw_button_press_event_t&>(event).detail;
    if (button != kLeft && button != kRight) return Change::none; // the wheel's own buttons
    return isPress ? Change::press : Change::release;
}

} // namespace

struct OutsideClickMonitor::Connection {
    Handle handle;
    std::function<void()> pressed;
    std::function<void()> released;
    std::unique_ptr<QSocketNotifier> notifier;
};

std::unique_ptr<OutsideClickMonitor> OutsideClickMonitor::create(std::function<void()> pressed,
                                                                 std::function<void()> released) {
    auto connection = std::make_unique<Connection>();
    connection->handle.reset(xcb_connect(nullptr, nullptr));
    auto* handle = connection->handle.get();
    if (xcb_connection_has_error(handle) != 0 || !hasRawEvents(handle)) return nullptr;
    connection->pressed = std::move(pressed);
    connection->released = std::move(released);
    selectPresses(handle);
    return std::unique_ptr<OutsideClickMonitor>(new OutsideClickMonitor(std::move(connection)));
}

bool OutsideClickMonitor::hasCompositor() {
    constexpr std::string_view kSelection = "_NET_WM_CM_S0";
    const Handle handle(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(handle.get()) != 0) return false;
    const Reply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
        handle.get(),
        xcb_intern_atom(handle.get(), 0, static_cast<std::uint16_t>(kSelection.size()),
                        kSelection.data()),
        nullptr));
    if (!atom) return false;
    const Reply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        handle.get(), xcb_get_selection_owner(handle.get(), atom->atom), nullptr));
    return owner && owner->owner != XCB_NONE;
}

OutsideClickMonitor::OutsideClickMonitor(std::unique_ptr<Connection> connection)
    : connection_(std::move(connection)) {
    const int descriptor = xcb_get_file_descriptor(connection_->handle.get());
    connection_->notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
    QObject::connect(connection_->notifier.get(), &QSocketNotifier::activated,
                     connection_->notifier.get(), [this] { read(); });
}

OutsideClickMonitor::~OutsideClickMonitor() = default;

void OutsideClickMonitor::read() {
    auto* handle = connection_->handle.get();
    bool isPressed = false;
    bool isReleased = false; // a click may have ended already
    while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(handle)}) {
        const auto change = changeIn(*event);
        isPressed = isPressed || change == Change::press;
        isReleased = change == Change::none ? isReleased : change == Change::release;
    }
    if (xcb_connection_has_error(handle) != 0) connection_->notifier->setEnabled(false);
    const auto pressed = connection_->pressed; // either may destroy this object
    const auto released = connection_->released;
    if (isPressed) pressed();
    if (isReleased) released();
}

} // namespace halvo
