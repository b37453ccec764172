#include "macos/MacTerminationSignal.h"

#include "macos/CoreAudioHardware.h"
#include "macos/MacUserDefaults.h"
#include "posix/ProcessTermination.h"

#include <csignal>

namespace halvo {

namespace {

/// The dispatch source reports the signal; this only keeps it from ending the process. A handler,
/// because children would inherit an ignored signal.
void leaveToTheSource(int /*signal*/) {}

void takeSignal(AudioHardware& mainHardware, TerminationSignal::Handler handler) {
    // Before the handler's first write, or the main thread would react to it.
    ProcessTermination::runLimited([&mainHardware] { mainHardware.silenceListeners(); });
    ProcessTermination::runLimited([handler] {
        CoreAudioHardware hardware;
        const MacUserDefaults defaults;
        handler(hardware, defaults);
    });
    ProcessTermination::dieBySignal();
}

} // namespace

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
    AudioHardware* hardware = &mainHardware_;
    dispatch_source_set_event_handler(source_, ^{
      takeSignal(*hardware, handler);
    });
    (void)std::signal(SIGTERM, leaveToTheSource);
    dispatch_resume(source_);
}

} // namespace halvo
