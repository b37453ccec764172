#pragma once

#include "loudness/GateTimer.h"
#include "platform/MainQueue.h"

#include <chrono>
#include <functional>
#include <utility>

namespace halvo {

class OutputGate;
class SystemLog;

/// What a running application has for its guard, and a mere restore has not.
struct LoudnessSession {
    /// By then the engine's own gain has followed the virtual device.
    static constexpr MainQueue::Duration kGateTime = std::chrono::milliseconds(60);

    LoudnessSession(OutputGate& outputGate, MainQueue& queue, SystemLog& systemLog,
                    std::function<void()> recordHandler)
        : gate(outputGate, queue), mainQueue(queue), log(systemLog),
          onRecord(std::move(recordHandler)) {}

    GateTimer gate;
    MainQueue& mainQueue;
    SystemLog& log;
    std::function<void()> onRecord; ///< may be empty
};

} // namespace halvo
