#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <filesystem>
#include <optional>
#include <string>
#include <utility>

namespace halvo {

/// Owns a Core Foundation object.
template <typename Ref> class CFHandle {
  public:
    CFHandle() = default;
    /// Takes ownership of an object that the caller would have to release; may be null.
    explicit CFHandle(Ref ref) : ref_(ref) {}
    ~CFHandle() {
        if (ref_) CFRelease(ref_);
    }
    CFHandle(CFHandle&& other) noexcept : ref_(std::exchange(other.ref_, nullptr)) {}
    CFHandle& operator=(CFHandle&& other) noexcept {
        std::swap(ref_, other.ref_);
        return *this;
    }
    CFHandle(const CFHandle&) = delete;
    CFHandle& operator=(const CFHandle&) = delete;

    explicit operator bool() const { return ref_ != nullptr; }
    Ref get() const { return ref_; }

  private:
    Ref ref_ = nullptr;
};

/// A UTF-8 text as a CFString; null when it is not valid UTF-8. Any thread.
CFHandle<CFStringRef> makeCFString(const std::string& text);

/// The UTF-8 text of a CFString; nothing when the object is null or not a string. Any thread.
std::optional<std::string> textOf(CFTypeRef object);

/// The path of a file URL; nothing when it is null or not a file URL. Any thread.
std::optional<std::filesystem::path> pathOf(CFURLRef url);

} // namespace halvo
