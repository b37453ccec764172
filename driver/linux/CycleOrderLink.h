#pragma once

#include <atomic>
#include <cstdint>
#include <pipewire/pipewire.h>

namespace halvo::driver {

/// Makes the server schedule the ring's reader after its writer in each cycle: a link from the
/// capture stream to a node that the reader has for this purpose. Without the link the reader plays
/// what was written one cycle earlier. Main loop only, but for `isMade`.
class CycleOrderLink {
  public:
    explicit CycleOrderLink(pw_core* core) : core_(core) {}
    ~CycleOrderLink();
    CycleOrderLink(const CycleOrderLink&) = delete;
    CycleOrderLink& operator=(const CycleOrderLink&) = delete;

    /// To be called for every object that the server announces, and removes.
    void consider(std::uint32_t id, const char* type, const spa_dict* properties);
    void forget(std::uint32_t id);
    /// The server refused to create object `proxyId`; the next change tries again.
    void refused(std::uint32_t proxyId);
    /// Any thread.
    bool isMade() const noexcept { return made_.load(std::memory_order_relaxed); }

  private:
    /// A node known by its name, and the first of its ports in one direction.
    struct End {
        const char* nodeName;
        const char* direction;
        std::uint32_t node = SPA_ID_INVALID;
        std::uint32_t port = SPA_ID_INVALID;

        void consider(std::uint32_t id, const char* type, const spa_dict& properties);
        bool forget(std::uint32_t id);
    };

    void update();
    void cut();

    pw_core* core_;
    End writer_{.nodeName = "halvo-audio-device", .direction = "out"};
    End reader_{.nodeName = "halvo-cycle-trigger", .direction = "in"};
    pw_proxy* link_ = nullptr;
    std::atomic<bool> made_{false};
    std::uint32_t linkedWriter_ = SPA_ID_INVALID;
    std::uint32_t linkedReader_ = SPA_ID_INVALID;
};

} // namespace halvo::driver
