#pragma once

#include "driver/linux/ProcessDescriptor.h"

#include <memory>
#include <pipewire/pipewire.h>

namespace halvo::driver {

/// The driver's side of supervision: when the supervisor is killed, starts another one, which
/// adopts this process. Main loop only.
class SupervisorWatch {
  public:
    SupervisorWatch(pw_loop* loop, pid_t supervisor);
    ~SupervisorWatch();
    SupervisorWatch(const SupervisorWatch&) = delete;
    SupervisorWatch& operator=(const SupervisorWatch&) = delete;

  private:
    static void onEnd(void* data, int descriptor, std::uint32_t mask);
    void watch(pid_t supervisor);
    void startAnother();

    pw_loop* const loop_;
    std::unique_ptr<ProcessDescriptor> supervisor_;
    spa_source* source_ = nullptr;
};

} // namespace halvo::driver
