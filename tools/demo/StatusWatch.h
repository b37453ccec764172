#pragma once

#include <array>
#include <atomic>
#include <string>
#include <thread>

namespace halvo::demo {

/// Asks the running application, on a thread of its own, for its active preset and band levels.
class StatusWatch {
  public:
    struct Seen {
        std::string activePreset;
        std::array<double, 10> highestLevels{}; ///< of each band while it was watched, 0 to 1
    };

    /// `busSocket` is where the session bus listens.
    explicit StatusWatch(std::string busSocket);
    ~StatusWatch() { (void)finish(); }
    StatusWatch(const StatusWatch&) = delete;
    StatusWatch& operator=(const StatusWatch&) = delete;

    /// Ends the watch and tells what was seen.
    Seen finish();

  private:
    void watch(const std::string& busSocket);

    Seen seen_; ///< the thread's until it has ended
    std::atomic<bool> done_{false};
    std::thread thread_;
};

} // namespace halvo::demo
