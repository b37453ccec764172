#include "macos/CoreFoundation.h"

#include <array>
#include <climits>

namespace halvo {

CFHandle<CFStringRef> makeCFString(const std::string& text) {
    return CFHandle<CFStringRef>(CFStringCreateWithBytes(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
        static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, /*isExternal*/ false));
}

std::optional<std::string> textOf(CFTypeRef object) {
    if (!object || CFGetTypeID(object) != CFStringGetTypeID()) return std::nullopt;
    const auto* string = static_cast<CFStringRef>(object);
    const CFRange all{0, CFStringGetLength(string)};
    CFIndex size = 0;
    (void)CFStringGetBytes(string, all, kCFStringEncodingUTF8, '?', false, nullptr, 0, &size);
    std::string text(static_cast<std::size_t>(size), '\0');
    (void)CFStringGetBytes(string, all, kCFStringEncodingUTF8, '?', false,
                           reinterpret_cast<UInt8*>(text.data()), size, nullptr);
    return text;
}

std::optional<std::filesystem::path> pathOf(CFURLRef url) {
    std::array<char, PATH_MAX> path{};
    if (!url || !CFURLGetFileSystemRepresentation(url, /*resolveAgainstBase*/ true,
                                                  reinterpret_cast<UInt8*>(path.data()),
                                                  static_cast<CFIndex>(path.size()))) {
        return std::nullopt;
    }
    return std::filesystem::path(path.data());
}

} // namespace halvo
