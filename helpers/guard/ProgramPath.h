#pragma once

#include <cstddef>

namespace halvo {

/// Writes the path of this process's program, with a 0 at its end; false when it is not known or
/// does not fit.
bool programPath(char* path, std::size_t size);

} // namespace halvo
