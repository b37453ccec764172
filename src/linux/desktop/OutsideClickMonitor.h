#pragma once

#include <functional>
#include <memory>

namespace halvo {

/// Hears every left and right press of a mouse on an X11 screen and its end, whoever gets it, over
/// a connection of its own, and takes none away. Main thread only.
class OutsideClickMonitor {
  public:
    /// Nothing where there is no X server, or one without raw events (XInput before 2.1).
    static std::unique_ptr<OutsideClickMonitor> create(std::function<void()> pressed,
                                                       std::function<void()> released);
    /// Whether windows on the X11 screen can be transparent.
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
