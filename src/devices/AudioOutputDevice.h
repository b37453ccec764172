#pragma once

#include <string>

namespace halvo {

/// An output device as the user sees it.
struct AudioOutputDevice {
    std::string uid; ///< the server's persistent identity
    std::string name;

    bool operator==(const AudioOutputDevice&) const = default;
};

} // namespace halvo
