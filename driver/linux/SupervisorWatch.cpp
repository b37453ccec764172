#include "driver/linux/SupervisorWatch.h"

#include <array>
#include <csignal>
#include <spawn.h>
#include <string>
#include <unistd.h>

namespace halvo::driver {

SupervisorWatch::SupervisorWatch(pw_loop* loop, pid_t supervisor) : loop_(loop) {
    // A process ID cannot be reused while that process is the parent.
    if (supervisor == ::getppid()) {
        watch(supervisor);
    } else {
        startAnother();
    }
}

SupervisorWatch::~SupervisorWatch() {
    if (source_ != nullptr) pw_loop_destroy_source(loop_, source_);
}

void SupervisorWatch::watch(pid_t supervisor) {
    if (source_ != nullptr) pw_loop_destroy_source(loop_, source_);
    source_ = nullptr;
    supervisor_ = std::make_unique<ProcessDescriptor>(supervisor);
    if (supervisor_->get() < 0) return;
    source_ = pw_loop_add_io(loop_, supervisor_->get(), SPA_IO_IN, false, onEnd, this);
}

void SupervisorWatch::onEnd(void* data, int, std::uint32_t) {
    auto* self = static_cast<SupervisorWatch*>(data);
    const auto ending = self->supervisor_->reap();
    if (!ending) return;
    pw_loop_destroy_source(self->loop_, self->source_);
    self->source_ = nullptr;
    // One that exited did so on purpose: there is another, or the driver is to end too.
    if (ending->end != ProcessDescriptor::End::exited) self->startAnother();
}

void SupervisorWatch::startAnother() {
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
    ::posix_spawnattr_init(&attributes);
    ::posix_spawn_file_actions_init(&actions);
    sigset_t none;
    sigemptyset(&none);
    ::posix_spawnattr_setsigmask(&attributes, &none);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);

    std::string name = "halvo-audio-device";
    std::string option = "--keep-alive";
    std::string number = std::to_string(::getpid());
    const std::array<char*, 4> words{name.data(), option.data(), number.data(), nullptr};
    pid_t child = 0;
    // The running program itself: its file may have been replaced meanwhile.
    const int error =
        ::posix_spawn(&child, "/proc/self/exe", &actions, &attributes, words.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::posix_spawnattr_destroy(&attributes);
    if (error == 0) watch(child);
}

} // namespace halvo::driver
