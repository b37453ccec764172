#pragma once

#include "driver/linux/ProcessDescriptor.h"

#include <memory>
#include <pipewire/pipewire.h>

namespace halvo::driver {

/// The driver's side of being kept: a keeper that is killed is followed by another, which adopts
/// this process. Main loop only.
class SupervisorWatch {
  public:
    SupervisorWatch(pw_loop* loop, pid_t keeper);
    ~SupervisorWatch();
    SupervisorWatch(const SupervisorWatch&) = delete;
    SupervisorWatch& operator=(const SupervisorWatch&) = delete;

  private:
    static void onEnd(void* data, int descriptor, std::uint32_t mask);
    void watch(pid_t keeper);
    void startAnother();

    pw_loop* const loop_;
    std::unique_ptr<ProcessDescriptor> keeper_;
    spa_source* source_ = nullptr;
};

} // namespace halvo::driver
