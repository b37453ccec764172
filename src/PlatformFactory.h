#pragma once

#include "platform/PlatformHost.h"

#include <expected>
#include <memory>

class QCoreApplication;

namespace halvo {

/// Settles what must be settled before the process has a second thread. The first call in `main`.
void preparePlatform();

/// The toolkit's application object, with windows where there is a screen. `argc` and `argv`
/// outlive it. Main thread, once.
std::unique_ptr<QCoreApplication> makeApplicationObject(int& argc, char** argv);

/// Makes the session's instance end in the normal way, and waits for that. False when it does not
/// end; true, too, where none runs. Needs the application object.
bool quitRunningInstance();

/// The services of the system that this is built for. Needs the application object.
std::expected<std::unique_ptr<PlatformHost>, PlatformRefusal> makePlatform();

} // namespace halvo
