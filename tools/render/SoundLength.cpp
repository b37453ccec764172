#include "render/SoundLength.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace halvo::render {

namespace {

// A program that writes to a pipe cannot go back to fill in the length. It writes 0 instead, the
// largest unsigned number, or one near the largest signed number.
constexpr std::uint32_t kUnknown = 0xFFFFFFFFU;
constexpr std::uint32_t kUnknownSignedFrom = 0x7FFF0000U;
constexpr std::uint32_t kUnknownSignedTo = 0x7FFFFFFFU;

class Headers {
  public:
    explicit Headers(int descriptor) : descriptor_(descriptor) {}

    /// Loads a chunk's identifier and the bytes after it; false at the end of the file.
    bool load(std::int64_t offset) {
        bytes_ = {};
        return ::pread(descriptor_, bytes_.data(), bytes_.size(), offset) >= kHeader;
    }
    std::string_view identity() const { return {bytes_.data(), 4}; }
    std::uint32_t word(std::size_t at) const {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            const auto byte = static_cast<unsigned char>(bytes_[at + (isBigEndian ? 3 - i : i)]);
            value |= std::uint32_t{byte} << (8 * i);
        }
        return value;
    }
    std::int64_t longWord(std::size_t at) const {
        const std::uint64_t value = word(at) | std::uint64_t{word(at + 4)} << 32U;
        return static_cast<std::int64_t>(std::min(value, std::uint64_t{1} << 60U));
    }

    static constexpr std::int64_t kHeader = 8;
    bool isBigEndian = false;

  private:
    int descriptor_;
    std::array<char, 32> bytes_{};
};

std::optional<std::int64_t> promisedBy(const Headers& headers, std::int64_t longLength) {
    const std::uint32_t length = headers.word(4);
    if (length == kUnknown) return longLength > 0 ? std::optional(longLength) : std::nullopt;
    const bool isUnknown =
        length == 0 || (length >= kUnknownSignedFrom && length <= kUnknownSignedTo);
    return isUnknown ? std::nullopt : std::optional(std::int64_t{length});
}

} // namespace

std::optional<SoundLength> soundLength(int descriptor) {
    struct stat status{};
    Headers headers(descriptor);
    if (::fstat(descriptor, &status) != 0 || !headers.load(0)) return std::nullopt;
    headers.isBigEndian = headers.identity() == "RIFX";
    std::int64_t longLength = 0; // of the data, where 32 bits are too few
    std::int64_t offset = 12;
    while (headers.load(offset)) {
        offset += Headers::kHeader;
        if (headers.identity() == "data") {
            const auto promised = promisedBy(headers, longLength);
            if (!promised) return std::nullopt;
            return SoundLength{*promised, std::max<std::int64_t>(status.st_size - offset, 0)};
        }
        if (headers.identity() == "ds64") longLength = headers.longWord(16);
        const std::int64_t length = headers.word(4);
        offset += length + length % 2;
    }
    return std::nullopt;
}

} // namespace halvo::render
