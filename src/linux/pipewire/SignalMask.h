#pragma once

#include <csignal>

namespace halvo {

/// Keeps signals from this thread, but for those of its own faults, as long as it lives. A thread
/// that calls libpipewire needs it: a signal's handler ends the library's wait for the render
/// thread, and the library goes on as if that had answered. Threads that are started meanwhile
/// inherit it.
class SignalMask {
  public:
    SignalMask() {
        sigset_t blocked;
        ::sigfillset(&blocked);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS})
            ::sigdelset(&blocked, fault);
        (void)::pthread_sigmask(SIG_BLOCK, &blocked, &before_);
    }
    ~SignalMask() { (void)::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalMask(const SignalMask&) = delete;
    SignalMask& operator=(const SignalMask&) = delete;

  private:
    sigset_t before_{};
};

} // namespace halvo
