#pragma once

#include "platform/PlatformHost.h"

#include <expected>
#include <memory>

class QCoreApplication;

namespace halvo {

/// Prepares the process before it has a second thread. The first call in `main`.
void preparePlatform();

/// The toolkit's application object, with windows where there is a screen. `argc` and `argv`
/// outlive it. Main thread, once.
std::unique_ptr<QCoreApplication> makeApplicationObject(int& argc, char** argv);

/// Quits the session's running instance and waits for its end. False when it does not end; true
/// also when none runs. Needs the application object.
bool quitRunningInstance();

/// The back end of the system that this is built for. Needs the application object.
std::expected<std::unique_ptr<PlatformHost>, PlatformRefusal> makePlatform();

} // namespace halvo
