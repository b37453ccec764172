#include "guard/ProgramPath.h"

#include <unistd.h>

namespace halvo {

bool programPath(char* path, std::size_t size) {
    const ssize_t length = ::readlink("/proc/self/exe", path, size - 1);
    if (length <= 0) return false;
    path[length] = '\0';
    return static_cast<std::size_t>(length) < size - 1;
}

} // namespace halvo
