#include "realtime/RenderThread.h"

namespace halvo::test {

// What the work does is not for the compiler to prove here but for the sanitizer to see.
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
