#pragma once

namespace halvo::test {

/// What a render thread must not do, and a way to run as one. Two implementations: interposed
/// functions, and RealtimeSanitizer.
using Work = void (*)(void* context);

/// Runs `work` under the render thread's rules; an allocation, a release of memory, a lock or a
/// wake-up ends the process.
void runAsRenderThread(Work work, void* context);

} // namespace halvo::test
