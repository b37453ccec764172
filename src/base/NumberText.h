#pragma once

#include <string>

namespace halvo {

/// The shortest decimal text that reads back as the same value, always with a fraction: "1.0",
/// "0.125", "5.24"; from 1e-4 down and from 2^24 up with an exponent: "1e-05". Not finite: "nan",
/// "inf", "-inf". Does not depend on the locale. Any thread.
std::string numberText(float value);

} // namespace halvo
