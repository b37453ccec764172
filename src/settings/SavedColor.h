#pragma once

#include "base/UUID.h"

#include <string>

namespace halvo {

/// A custom accent colour.
struct SavedColor {
    UUID id = UUID::random();
    std::string hex; ///< as entered, normally "#" and six hexadecimal digits
    std::string name;

    bool operator==(const SavedColor&) const = default;
};

} // namespace halvo
