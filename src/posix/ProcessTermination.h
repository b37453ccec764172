#pragma once

#include <functional>

namespace halvo::ProcessTermination {

/// Runs `step` on another thread and waits for it, but at most 450 ms. Any thread.
void runLimited(const std::function<void()>& step);

/// Ends the process as SIGTERM does by itself, whatever was set up for it. Any thread.
void dieBySignal();

} // namespace halvo::ProcessTermination
