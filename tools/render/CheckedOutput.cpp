#include "render/CheckedOutput.h"

#include "posix/FileDescriptor.h"

#include <cerrno>
#include <cstddef>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace halvo::render {

namespace {

CheckedOutput& output(void* self) {
    return *static_cast<CheckedOutput*>(self);
}

} // namespace

SNDFILE* CheckedOutput::open(SF_INFO& info) {
    SF_VIRTUAL_IO functions{length, seek, read, write, tell};
    return sf_open_virtual(&functions, SFM_WRITE, &info, this);
}

sf_count_t CheckedOutput::length(void* self) {
    struct stat status{};
    return ::fstat(output(self).descriptor_, &status) == 0 ? status.st_size : -1;
}

sf_count_t CheckedOutput::seek(sf_count_t offset, int whence, void* self) {
    return ::lseek(output(self).descriptor_, offset, whence);
}

sf_count_t CheckedOutput::read(void* bytes, sf_count_t count, void* self) {
    return ::read(output(self).descriptor_, bytes, static_cast<std::size_t>(count));
}

sf_count_t CheckedOutput::write(const void* bytes, sf_count_t count, void* self) {
    auto& file = output(self);
    if (file.error_ != 0) return 0;
    const std::string_view all(static_cast<const char*>(bytes), static_cast<std::size_t>(count));
    if (writeAll(file.descriptor_, all)) return count;
    file.error_ = errno;
    return 0;
}

sf_count_t CheckedOutput::tell(void* self) {
    return ::lseek(output(self).descriptor_, 0, SEEK_CUR);
}

} // namespace halvo::render
