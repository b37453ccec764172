#include "macos/MacUserDefaults.h"

#include "base/TextValues.h"
#include "macos/CoreFoundation.h"

#include <cmath>

namespace halvo {

namespace {

/// As in the bundle's property list: a helper may have no bundle of its own.
CFStringRef domain() {
    return CFSTR("org.halvo.Halvo");
}

using Value = CFHandle<CFPropertyListRef>;

Value valueOf(const std::string& key) {
    const auto name = makeCFString(key);
    if (!name) return {};
    return Value(CFPreferencesCopyAppValue(name.get(), domain()));
}

bool isA(const Value& value, CFTypeID type) {
    return value && CFGetTypeID(value.get()) == type;
}

} // namespace

bool MacUserDefaults::contains(const std::string& key) const {
    return static_cast<bool>(valueOf(key));
}

bool MacUserDefaults::boolForKey(const std::string& key) const {
    const auto value = valueOf(key);
    if (isA(value, CFBooleanGetTypeID())) {
        return CFBooleanGetValue(static_cast<CFBooleanRef>(value.get())) != 0;
    }
    if (const auto text = stringForKey(key)) return boolOfText(*text);
    return doubleForKey(key).value_or(0) != 0;
}

std::optional<double> MacUserDefaults::doubleForKey(const std::string& key) const {
    const auto value = valueOf(key);
    if (!isA(value, CFNumberGetTypeID())) return std::nullopt;
    double number = 0;
    // What it returns only says whether the conversion was exact.
    (void)CFNumberGetValue(static_cast<CFNumberRef>(value.get()), kCFNumberDoubleType, &number);
    return number;
}

std::optional<std::string> MacUserDefaults::stringForKey(const std::string& key) const {
    return textOf(valueOf(key).get());
}

std::optional<std::string> MacUserDefaults::dataForKey(const std::string& key) const {
    const auto value = valueOf(key);
    if (!isA(value, CFDataGetTypeID())) return std::nullopt;
    const auto* data = static_cast<CFDataRef>(value.get());
    return std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(data)),
                       static_cast<std::size_t>(CFDataGetLength(data)));
}

void MacUserDefaults::setBool(const std::string& key, bool value) {
    set(key, value ? kCFBooleanTrue : kCFBooleanFalse);
}

void MacUserDefaults::setFloat(const std::string& key, float value) {
    if (!std::isfinite(value)) return;
    const CFHandle<CFNumberRef> number(
        CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat32Type, &value));
    set(key, number.get());
}

void MacUserDefaults::setDouble(const std::string& key, double value) {
    if (!std::isfinite(value)) return;
    const CFHandle<CFNumberRef> number(
        CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat64Type, &value));
    set(key, number.get());
}

void MacUserDefaults::setString(const std::string& key, const std::string& value) {
    if (const auto text = makeCFString(value)) set(key, text.get());
}

void MacUserDefaults::setData(const std::string& key, const std::string& bytes) {
    const CFHandle<CFDataRef> data(CFDataCreate(kCFAllocatorDefault,
                                                reinterpret_cast<const UInt8*>(bytes.data()),
                                                static_cast<CFIndex>(bytes.size())));
    set(key, data.get());
}

void MacUserDefaults::remove(const std::string& key) {
    set(key, nullptr);
}

void MacUserDefaults::set(const std::string& key, CFPropertyListRef value) {
    const auto name = makeCFString(key);
    if (!name) return;
    CFPreferencesSetAppValue(name.get(), value, domain());
    // Synchronizes now, so that a killed process loses nothing. After a failure the value stays in
    // memory and is written with the next one.
    (void)CFPreferencesAppSynchronize(domain());
}

} // namespace halvo
