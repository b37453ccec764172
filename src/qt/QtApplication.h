#pragma once

#include "platform/Application.h"
#include "qt/QtMainQueue.h"

namespace halvo {

/// The program's main loop. Main thread only; needs the application object.
class QtApplication final : public Application {
  public:
    /// Takes effect when the main loop is back in charge, also when it has not started yet.
    void terminate() override;

    /// Runs the main loop until `terminate`; returns the exit status.
    int run();

  private:
    bool terminating_ = false;
    QtMainQueue queue_;
};

} // namespace halvo
