#pragma once

#include <functional>
#include <memory>

namespace halvo {

/// Reports every left and right mouse press and release on an X11 screen, over its own connection,
/// without grabbing them. Main thread only.
class OutsideClickMonitor {
  public:
    /// Null without an X server, or with one without raw events (XInput before 2.1).
    static std::unique_ptr<OutsideClickMonitor> create(std::function<void()> pressed,
                                                       std::function<void()> released);
    /// Whether the X11 screen has a compositor, so that windows can be transparent.
    static bool hasCompositor();
    ~OutsideClickMonitor();
    OutsideClickMonitor(const OutsideClickMonitor&) = delete;
    OutsideClickMonitor& operator=(const OutsideClickMonitor&) = delete;

  private:
    struct Connection;

    explicit OutsideClickMonitor(std::unique_ptr<Connection> connection);
    void read();

    std::unique_ptr<Connection> connection_;
};

} // namespace halvo
