#pragma once

#include "platform/TerminationSignal.h"
#include "posix/FileDescriptor.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <thread>

namespace halvo {

/// Handles SIGTERM on a thread that waits for it; nothing runs in signal context. Main thread.
class LinuxTerminationSignal final : public TerminationSignal {
  public:
    /// Blocks SIGTERM, so that only the waiting thread takes it. Once, before any thread starts.
    static void blockBeforeThreads();
    /// SIGTERM ends the process at once again. For the end of the program, when everything is
    /// restored. Affects the calling thread.
    static void unblock();

    /// Makes what the handler uses when the signal arrives. Called once, on another thread.
    using MakeHardware = std::function<std::unique_ptr<AudioHardware>()>;

    /// `mainHardware` is what the main thread listens to and must outlive this object; `defaults`
    /// is the file of the user defaults; `handled` is called when the handler has returned,
    /// on its thread.
    LinuxTerminationSignal(AudioHardware& mainHardware, MakeHardware makeHardware,
                           std::filesystem::path defaults, std::function<void()> handled = {});
    /// SIGTERM stays blocked; if one has been taken, the process ends here.
    ~LinuxTerminationSignal() override;

    /// The process ends at most 450 ms after the handler has started, whatever it does.
    void install(Handler handler) override;

  private:
    void waitForSignal(Handler handler);

    AudioHardware& mainHardware_;
    MakeHardware makeHardware_;
    std::filesystem::path defaults_;
    std::function<void()> handled_;
    FileDescriptor signal_; ///< readable once SIGTERM has arrived
    FileDescriptor stop_;   ///< readable once this is being destroyed
    std::thread thread_;
};

} // namespace halvo
