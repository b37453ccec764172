#pragma once

#include <sndfile.h>

namespace halvo::render {

/// The file that libsndfile writes to. Remembers the first error: the library does not report
/// those that occur while it closes the file.
class CheckedOutput {
  public:
    /// The caller keeps the descriptor; the library keeps a pointer to this object.
    explicit CheckedOutput(int descriptor) : descriptor_(descriptor) {}
    CheckedOutput(const CheckedOutput&) = delete;
    CheckedOutput& operator=(const CheckedOutput&) = delete;

    /// As `sf_open`, for writing.
    SNDFILE* open(SF_INFO& info);

    /// The errno of the first error; 0 while there was none.
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
