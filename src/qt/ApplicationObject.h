#pragma once

#include <memory>
#include <string>

class QCoreApplication;

namespace halvo {

/// Makes Qt's application object: with windows on the first of the toolkit's back ends that works,
/// without where `screens` is empty. `argc` and `argv` outlive it. Main thread, once.
std::unique_ptr<QCoreApplication> makeApplicationObject(int& argc, char** argv,
                                                        const std::string& screens);

/// Whether the application object can show windows on a real screen.
bool hasScreen();

} // namespace halvo
