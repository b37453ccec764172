#include "macos/MacTerminationSignal.h"

#include "macos/MacUserDefaults.h"
#include "platform/AudioHardware.h"
#include "posix/ProcessTermination.h"

#include <csignal>
#include <utility>

namespace halvo {

namespace {

/// The dispatch source reports the signal; this only keeps it from ending the process. A handler,
/// because children would inherit an ignored signal.
void leaveToTheSource(int /*signal*/) {}

} // namespace

MacTerminationSignal::MacTerminationSignal(AudioHardware& mainHardware, MakeHardware makeHardware,
                                           std::function<void()> handled)
    : steps_(std::make_shared<const Steps>(
          Steps{mainHardware, std::move(makeHardware), std::move(handled)})) {}

MacTerminationSignal::~MacTerminationSignal() {
    if (!source_) return;
    (void)std::signal(SIGTERM, SIG_DFL);
    dispatch_source_cancel(source_);
    dispatch_release(source_);
}

void MacTerminationSignal::install(Handler handler) {
    if (source_) return;
    source_ = dispatch_source_create(DISPATCH_SOURCE_TYPE_SIGNAL, SIGTERM, 0,
                                     dispatch_get_global_queue(QOS_CLASS_USER_INITIATED, 0));
    if (!source_) return; // the default action then ends the process
    const auto steps = steps_;
    dispatch_source_set_event_handler(source_, ^{
      takeSignal(steps, handler);
    });
    (void)std::signal(SIGTERM, leaveToTheSource);
    dispatch_resume(source_);
}

void MacTerminationSignal::takeSignal(const std::shared_ptr<const Steps>& steps, Handler handler) {
    // Before the handler's first write, or the main thread would react to it.
    ProcessTermination::runLimited([steps] { steps->mainHardware.silenceListeners(); });
    ProcessTermination::runLimited([steps, handler] {
        const auto hardware = steps->makeHardware();
        const MacUserDefaults defaults;
        if (!hardware) return;
        handler(*hardware, defaults);
        if (steps->handled) steps->handled();
    });
    ProcessTermination::dieBySignal();
}

} // namespace halvo
