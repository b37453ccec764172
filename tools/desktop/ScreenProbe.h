#pragma once

#include <QRect>

#include <cstdint>
#include <string>
#include <vector>

struct xcb_connection_t;

namespace halvo::desktop {

/// Watches a small area of the X11 screen over a connection of its own; cheap enough for a thousand
/// looks a second. One thread.
class ScreenProbe {
  public:
    using Pixels = std::vector<std::uint32_t>;

    /// Remembers what the area shows now, for `isChanged`.
    ScreenProbe(const std::string& display, QRect area);
    ~ScreenProbe();
    ScreenProbe(const ScreenProbe&) = delete;
    ScreenProbe& operator=(const ScreenProbe&) = delete;

    /// Whether most of the area differs.
    bool isChanged() const;
    Pixels read() const;

  private:
    xcb_connection_t* connection_;
    QRect area_;
    Pixels before_;
};

} // namespace halvo::desktop
