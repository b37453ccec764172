#pragma once

#include <string>
#include <vector>

namespace halvo {

class UnicodeText;

/// Finds the factory preset for an artist's tags. Any thread.
class GenrePresetMapper {
  public:
    explicit GenrePresetMapper(const UnicodeText& unicode) : unicode_(unicode) {}

    /// The preset's name. The order of the table decides, not that of the tags; "Flat" without a
    /// match.
    std::string bestPreset(const std::vector<std::string>& tags) const;

  private:
    const UnicodeText& unicode_;
};

} // namespace halvo
