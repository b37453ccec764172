#pragma once

namespace halvo::render {

/// Notes Ctrl+C, SIGTERM and a terminal that goes, so that the work can end tidily. One per
/// process.
class Interruption {
  public:
    /// Takes the signals, but those that the caller has the process ignore.
    Interruption();

    /// The signal that came; 0 for none.
    int signal() const;

    /// Ends the process by the signal that came, as it would have without this class.
    [[noreturn]] static void endBy(int signal);
};

} // namespace halvo::render
