#pragma once

#include "platform/TerminationSignal.h"
#include "posix/FileDescriptor.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <thread>

namespace halvo {

/// SIGTERM, taken by a thread that waits for it; nothing runs in signal context. Main thread.
class LinuxTerminationSignal final : public TerminationSignal {
  public:
    /// Blocks SIGTERM, so that only the waiting thread takes it. Once, before any thread starts.
    static void blockBeforeThreads();
    /// Lets SIGTERM end the process at once again. For the end of the program, when there is
    /// nothing left to give back. Affects the calling thread.
    static void unblock();
    /// Clears the blocked signals that a child would inherit. Between fork and exec (the modifier
    /// of QProcess); async-signal-safe.
    static void unblockInChild() noexcept;

    /// What the handler may use when the signal arrives. Called on a thread of its own, once.
    using MakeHardware = std::function<std::unique_ptr<AudioHardware>()>;

    /// `mainHardware` is what the main thread listens to and must outlive this object; `defaults`
    /// is the file of the user defaults; `handled` is called when the handler has come to its end,
    /// on its thread.
    LinuxTerminationSignal(AudioHardware& mainHardware, MakeHardware makeHardware,
                           std::filesystem::path defaults, std::function<void()> handled = {});
    /// SIGTERM stays blocked; one that was taken already ends the process here.
    ~LinuxTerminationSignal() override;

    /// The process ends at the latest 450 ms after the handler started, whatever it does.
    void install(Handler handler) override;

  private:
    void waitForSignal(Handler handler);

    AudioHardware& mainHardware_;
    MakeHardware makeHardware_;
    std::filesystem::path defaults_;
    std::function<void()> handled_;
    FileDescriptor signal_; ///< readable once SIGTERM has arrived
    FileDescriptor stop_;   ///< readable once this object goes
    std::thread thread_;
};

} // namespace halvo
