#include "nowplaying/LineFramer.h"

#include <utility>

namespace halvo {

void LineFramer::append(std::string_view bytes, const std::function<void(std::string)>& onLine,
                        const std::function<void()>& onDropped) {
    while (!bytes.empty()) {
        const auto end = bytes.find('\n');
        if (!isDropping_ && !keep(bytes.substr(0, end))) onDropped();
        if (end == std::string_view::npos) return;
        bytes.remove_prefix(end + 1);
        if (!std::exchange(isDropping_, false)) onLine(std::exchange(dataBuffer_, {}));
    }
}

bool LineFramer::keep(std::string_view piece) {
    if (dataBuffer_.size() + piece.size() <= limit_) {
        dataBuffer_ += piece;
        return true;
    }
    dataBuffer_ = {}; // its memory too
    isDropping_ = true;
    return false;
}

} // namespace halvo
