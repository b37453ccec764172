#pragma once

#include <functional>

namespace halvo::ProcessTermination {

/// Runs `step` on another thread and waits for it, 450 ms at most. Any thread.
void runLimited(const std::function<void()>& step);

/// Ends the process by SIGTERM with its default action. Any thread.
void dieBySignal();

} // namespace halvo::ProcessTermination
