#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

namespace halvo::render {

/// One line of a terminal that fills as work proceeds, and is wiped at the end.
class ProgressBar {
  public:
    /// Draws to `terminal`; to null, nothing is drawn.
    explicit ProgressBar(std::FILE* terminal) : terminal_(terminal) {}
    ~ProgressBar() { wipe(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Draws what is done, ten times a second at most.
    void show(std::int64_t done, std::int64_t total);
    void wipe();

    /// The line, 58 columns wide.
    static std::string line(std::int64_t done, std::int64_t total);

  private:
    std::FILE* terminal_;
    std::chrono::steady_clock::time_point next_{};
    bool isDrawn_ = false;
};

} // namespace halvo::render
