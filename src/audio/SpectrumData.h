#pragma once

#include "audio/SpectrumAnalyzer.h"
#include "base/Published.h"

namespace halvo {

/// The band levels as the interface sees them. Main thread only.
class SpectrumData {
  public:
    Published<SpectrumAnalyzer::BandLevels> bandLevels;
};

} // namespace halvo
