#include "render/ProgressBar.h"

#include <algorithm>

namespace halvo::render {

namespace {

constexpr std::size_t kWidth = 50;

} // namespace

std::string ProgressBar::line(std::int64_t done, std::int64_t total) {
    const double share =
        total > 0 ? std::clamp(static_cast<double>(done) / static_cast<double>(total), 0.0, 1.0)
                  : 0.0;
    const auto filled = static_cast<std::size_t>(share * static_cast<double>(kWidth));
    const auto percent = std::to_string(static_cast<int>(share * 100));
    std::string line(1, '[');
    line.append(filled, '=').append(kWidth - filled, ' ').append("]");
    return line.append(4 - percent.size(), ' ').append(percent).append(" %");
}

void ProgressBar::show(std::int64_t done, std::int64_t total) {
    if (terminal_ == nullptr) return;
    const auto now = std::chrono::steady_clock::now();
    if (now < next_) return;
    next_ = now + std::chrono::milliseconds(100);
    (void)std::fprintf(terminal_, "\r%s", line(done, total).c_str()); // a bar is not worth failing
    (void)std::fflush(terminal_);
    isDrawn_ = true;
}

void ProgressBar::wipe() {
    if (!isDrawn_) return;
    (void)std::fprintf(terminal_, "\r%*s\r", static_cast<int>(kWidth + 8), "");
    (void)std::fflush(terminal_);
    isDrawn_ = false;
}

} // namespace halvo::render
