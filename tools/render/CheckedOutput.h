#pragma once

#include <sndfile.h>

namespace halvo::render {

/// The file below the library's writing, which remembers the first failure: of what fails while it
/// closes a file, the library tells nothing.
class CheckedOutput {
  public:
    /// The descriptor stays the caller's, and at this object the library keeps pointing.
    explicit CheckedOutput(int descriptor) : descriptor_(descriptor) {}
    CheckedOutput(const CheckedOutput&) = delete;
    CheckedOutput& operator=(const CheckedOutput&) = delete;

    /// As `sf_open`, for writing.
    SNDFILE* open(SF_INFO& info);

    /// The number of the first error of the system; 0 as long as all went well.
    int error() const { return error_; }

  private:
    static sf_count_t length(void* self);
    static sf_count_t seek(sf_count_t offset, int whence, void* self);
    static sf_count_t read(void* bytes, sf_count_t count, void* self);
    static sf_count_t write(const void* bytes, sf_count_t count, void* self);
    static sf_count_t tell(void* self);

    int descriptor_;
    int error_ = 0;
};

} // namespace halvo::render
