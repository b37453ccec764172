#include "desktop/ScreenProbe.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <xcb/xcb.h>

namespace halvo::desktop {

ScreenProbe::ScreenProbe(const std::string& display, QRect area)
    : connection_(xcb_connect(display.c_str(), nullptr)), area_(area), before_(read()) {}

ScreenProbe::~ScreenProbe() {
    xcb_disconnect(connection_);
}

ScreenProbe::Pixels ScreenProbe::read() const {
    struct Free {
        void operator()(void* memory) const { std::free(memory); }
    };
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    const auto cookie = xcb_get_image(
        connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root, static_cast<std::int16_t>(area_.x()),
        static_cast<std::int16_t>(area_.y()), static_cast<std::uint16_t>(area_.width()),
        static_cast<std::uint16_t>(area_.height()), ~0U);
    const std::unique_ptr<xcb_get_image_reply_t, Free> image(
        xcb_get_image_reply(connection_, cookie, nullptr));
    if (!image) return {};
    const auto bytes = static_cast<std::size_t>(xcb_get_image_data_length(image.get()));
    Pixels pixels(bytes / sizeof(std::uint32_t));
    std::memcpy(pixels.data(), xcb_get_image_data(image.get()),
                pixels.size() * sizeof(std::uint32_t));
    return pixels;
}

bool ScreenProbe::isChanged() const {
    const auto now = read();
    if (now.size() != before_.size()) return false;
    std::size_t different = 0;
    for (std::size_t n = 0; n < now.size(); ++n)
        different += now[n] != before_[n] ? 1U : 0U;
    return 2 * different > now.size();
}

} // namespace halvo::desktop
