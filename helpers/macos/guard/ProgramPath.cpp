#include "guard/ProgramPath.h"

#include <cstdint>
#include <mach-o/dyld.h>

namespace halvo {

bool programPath(char* path, std::size_t size) {
    auto room = static_cast<std::uint32_t>(size);
    return _NSGetExecutablePath(path, &room) == 0;
}

} // namespace halvo
