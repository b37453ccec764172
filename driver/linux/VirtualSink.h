#pragma once

#include <cstdint>
#include <functional>
#include <pipewire/pipewire.h>

namespace halvo::driver {

/// The output that other programs play into. The server keeps it when this process ends, so that a
/// driver that dies costs silence and not a fallback to another device. Main loop only.
class VirtualSink {
  public:
    /// `changed` is called when the sink appears or goes.
    explicit VirtualSink(std::function<void()> changed);
    ~VirtualSink();
    VirtualSink(const VirtualSink&) = delete;
    VirtualSink& operator=(const VirtualSink&) = delete;

    /// To be told of every object of the server and of each that goes.
    void consider(std::uint32_t id, const char* type, const spa_dict* properties);
    void forget(std::uint32_t id);

    /// Whether the server has the sink, whoever made it.
    bool isPresent() const { return id_ != SPA_ID_INVALID; }
    /// Asks the server for the sink, unless it is there or was asked for; a second one would be a
    /// twin. Only when all objects that exist have been considered.
    void ensure(pw_core* core);
    /// The server refused; the next `ensure` asks again.
    void requestFailed();
    /// Whether the server's object number `proxyId` is the request.
    bool isRequest(std::uint32_t proxyId) const;

  private:
    std::function<void()> changed_;
    std::uint32_t id_ = SPA_ID_INVALID;
    pw_proxy* request_ = nullptr;
};

} // namespace halvo::driver
