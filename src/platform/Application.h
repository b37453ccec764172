#pragma once

namespace halvo {

/// The running program as the system sees it. Main thread only.
class Application {
  public:
    virtual ~Application() = default;

    /// Asks the program to end in the normal way once the current work is done.
    virtual void terminate() = 0;
};

} // namespace halvo
