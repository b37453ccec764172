#include "Cover.h"

#include "posix/FileDescriptor.h"

#include <algorithm>
#include <cstdint>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace halvo::helper {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kLargestBase64 = (kLargestCover + 2) / 3 * 4;

char lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
}

/// Whether the URL has the scheme, in upper or lower case.
bool hasScheme(std::string_view url, std::string_view scheme) {
    return url.size() > scheme.size() &&
           std::ranges::equal(url.substr(0, scheme.size()), scheme, {}, lower);
}

int hexDigit(char character) {
    const char digit = lower(character);
    if (digit >= '0' && digit <= '9') return digit - '0';
    return digit >= 'a' && digit <= 'f' ? digit - 'a' + 10 : -1;
}

/// A percent sign without two hexadecimal digits stands for itself: some players do not encode.
std::string percentDecoded(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isPair = text[i] == '%' && i + 2 < text.size() && hexDigit(text[i + 1]) >= 0 &&
                            hexDigit(text[i + 2]) >= 0;
        if (isPair) {
            bytes += static_cast<char>(hexDigit(text[i + 1]) * 16 + hexDigit(text[i + 2]));
            i += 2;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

bool isBase64(std::string_view text) {
    const auto padding = text.ends_with("==") ? 2U : text.ends_with('=') ? 1U : 0U;
    return !text.empty() && text.size() % 4 == 0 &&
           text.substr(0, text.size() - padding).find_first_not_of(kAlphabet) ==
               std::string_view::npos;
}

std::string readFile(const std::string& path) {
    // Non-blocking: the name may belong to a pipe.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status{};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
    if (status.st_size <= 0 || static_cast<std::size_t>(status.st_size) > kLargestCover) return {};
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count = ::read(file.get(), bytes.data() + filled, bytes.size() - filled);
        if (count <= 0) return {};
        filled += static_cast<std::size_t>(count);
    }
    return bytes;
}

std::string fileCover(std::string_view rest) {
    if (!rest.starts_with("//")) return base64Of(readFile(percentDecoded(rest)));
    rest.remove_prefix(2);
    const auto path = rest.find('/');
    const auto host = rest.substr(0, path);
    if (path == std::string_view::npos || (!host.empty() && host != "localhost")) return {};
    return base64Of(readFile(percentDecoded(rest.substr(path))));
}

std::string dataCover(std::string_view rest) {
    const auto comma = rest.find(',');
    if (comma == std::string_view::npos) return {};
    std::string content = percentDecoded(rest.substr(comma + 1));
    if (!rest.substr(0, comma).ends_with(";base64")) {
        return content.size() <= kLargestCover ? base64Of(content) : std::string();
    }
    std::erase_if(content, [](char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; });
    return content.size() <= kLargestBase64 && isBase64(content) ? content : std::string();
}

} // namespace

std::string base64Of(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            const auto byte = i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U;
            group = group << 8U | byte;
        }
        for (std::size_t k = 0; k < 4; ++k) {
            const bool isPadding = i + k > bytes.size();
            text += isPadding ? '=' : kAlphabet[group >> (18U - 6U * k) & 63U];
        }
    }
    return text;
}

bool isRemoteCover(std::string_view url) {
    return hasScheme(url, "http://") || hasScheme(url, "https://");
}

std::string localCover(const std::string& url) {
    const std::string_view view = url;
    if (hasScheme(view, "file:")) return fileCover(view.substr(5));
    if (hasScheme(view, "data:")) return dataCover(view.substr(5));
    return {};
}

} // namespace halvo::helper
