#pragma once

#include <functional>
#include <string>

namespace halvo::test {

/// How a forked child ended.
struct Ending {
    bool clean = false;  ///< ran to its end
    std::string offence; ///< the violation that ended it, if known
    std::string place;   ///< the last place it recorded
};

/// Runs `work` in a child of this process and waits for it. Call from the only thread.
Ending runForked(const std::function<void()>& work);

/// Records where the child is; `place` must be a literal. In the child, real-time safe.
void notePlace(const char* place) noexcept;
/// Ends the child for a violation; `what` must be a literal. In the child.
[[noreturn]] void endWithOffence(const char* what) noexcept;
/// Ends the child for a system call, by its number. In the child, safe in a signal handler.
[[noreturn]] void endWithSystemCall(int number) noexcept;
/// Ends the child as if `work` had returned, by one system call and no other. In the child.
[[noreturn]] void endCleanly() noexcept;

} // namespace halvo::test
