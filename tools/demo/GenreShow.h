#pragma once

#include "MeasurementSession.h"
#include "Report.h"

#include <expected>
#include <string>
#include <vector>

namespace halvo::demo {

/// A player announces tracks of three genres while the application runs with presets that follow
/// the genre, and a tag service of the demo's own answers; what the application then did.
std::expected<std::vector<AnnouncedTrack>, std::string> showGenres(MeasurementSession& session);

} // namespace halvo::demo
