#pragma once

#include "StereoSound.h"
#include "session/Recorder.h"

namespace halvo::demo {

/// A recording laid out on the server's clock: frames that were lost are silence.
struct ClockedSound {
    std::int64_t begin = 0; ///< the clock's position at the first frame
    StereoSound sound;

    static ClockedSound from(const session::Recording& recording);
};

} // namespace halvo::demo
