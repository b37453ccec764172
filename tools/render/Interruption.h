#pragma once

namespace halvo::render {

/// Catches SIGINT, SIGTERM and SIGHUP, so that the program can clean up before it ends. One per
/// process.
class Interruption {
  public:
    /// Handles those of the signals that the process does not ignore already.
    Interruption();

    /// The signal that arrived; 0 for none.
    int signal() const;

    /// Ends the process by that signal, as it would have ended without this class.
    [[noreturn]] static void endBy(int signal);
};

} // namespace halvo::render
