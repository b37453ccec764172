#pragma once

#include <string>
#include <vector>

namespace halvo {

class UnicodeText;

/// Finds the factory preset that suits an artist's tags. Any thread.
class GenrePresetMapper {
  public:
    explicit GenrePresetMapper(const UnicodeText& unicode) : unicode_(unicode) {}

    /// A preset's name. The table's order decides, not the tags'; without a match it is "Flat".
    std::string bestPreset(const std::vector<std::string>& tags) const;

  private:
    const UnicodeText& unicode_;
};

} // namespace halvo
