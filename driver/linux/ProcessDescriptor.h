#pragma once

#include <chrono>
#include <optional>
#include <sys/types.h>

namespace halvo::driver {

/// Another process, by a descriptor that never comes to mean a third one. One thread.
class ProcessDescriptor {
  public:
    enum class End { unknown, exited, killed };
    /// How a process ended; `unknown` where it is no child of this one.
    struct Ending {
        End end = End::unknown;
        int status = 0; ///< of one that exited
    };

    /// Holds nothing when there is no such process.
    explicit ProcessDescriptor(pid_t process);
    ~ProcessDescriptor();
    ProcessDescriptor(const ProcessDescriptor&) = delete;
    ProcessDescriptor& operator=(const ProcessDescriptor&) = delete;

    /// Readable once the process has ended; negative when there was none.
    int get() const { return descriptor_; }
    bool signal(int number) const;
    /// Whether it ended in time.
    bool waitForEnd(std::chrono::milliseconds patience) const;
    /// Takes a child that has ended off the system's list; nothing while it runs.
    std::optional<Ending> reap() const;

  private:
    int descriptor_;
};

} // namespace halvo::driver
