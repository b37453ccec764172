#pragma once

#include "loudness/RaisedDevicesRecord.h"

#include <filesystem>

namespace halvo {

/// Where application and session guard find what they share. Any thread.
struct SessionFiles {
    RaisedDevicesRecord::Places record;
    std::filesystem::path lock; ///< of who may change the session's devices
};

} // namespace halvo
