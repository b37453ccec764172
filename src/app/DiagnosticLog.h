#pragma once

#include <string>

namespace halvo {

class FileSystem;
class SystemLog;

/// The application shell's log: each line goes to the system log and to "halvo_debug.log" in the
/// temporary directory. Main thread only.
class DiagnosticLog {
  public:
    DiagnosticLog(SystemLog& log, FileSystem& files) : log_(log), files_(files) {}

    /// Writes "Halvo: " and the message.
    void write(const std::string& message);

  private:
    SystemLog& log_;
    FileSystem& files_;
};

} // namespace halvo
