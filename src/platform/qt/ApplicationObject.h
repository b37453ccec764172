#pragma once

#include <memory>

class QCoreApplication;

namespace halvo {

/// Makes Qt's application object: with windows where there is a screen, without where there is
/// none. `argc` and `argv` outlive it. Main thread, once.
std::unique_ptr<QCoreApplication> makeApplicationObject(int& argc, char** argv);

/// Whether the application object can show windows that somebody sees.
bool hasScreen();

} // namespace halvo
