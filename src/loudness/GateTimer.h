#pragma once

#include "base/Lifetime.h"
#include "platform/MainQueue.h"

#include <cstdint>

namespace halvo {

class OutputGate;

/// Closes an `OutputGate` for a time. Main thread only.
class GateTimer {
  public:
    GateTimer(OutputGate& gate, MainQueue& mainQueue) : gate_(gate), mainQueue_(mainQueue) {}

    /// Closes the gate now and opens it after that time. The last call counts.
    void closeFor(MainQueue::Duration time);
    /// The same where that is not sooner than an earlier call has it.
    void closeAtLeastFor(MainQueue::Duration time);

  private:
    OutputGate& gate_;
    MainQueue& mainQueue_;
    std::uint64_t generation_ = 0;
    MainQueue::Duration opening_{};
    Lifetime lifetime_;
};

} // namespace halvo
