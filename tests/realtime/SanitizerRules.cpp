#include "realtime/RenderThread.h"

namespace halvo::test {

// Here the sanitizer checks the work, not the compiler.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wfunction-effects"
void runUnderSanitizer(Work work, void* context) noexcept [[clang::nonblocking]] {
    work(context);
}
#pragma clang diagnostic pop

void runAsRenderThread(Work work, void* context) {
    runUnderSanitizer(work, context);
}

} // namespace halvo::test
