#include "base/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace halvo {

namespace {

constexpr int kMostDigits = 9; // enough for every float to read back

/// A finite magnitude as digits d and an exponent e: d[0].d[1]d[2]... × 10^e.
struct Decimal {
    std::string digits;
    int exponent = 0;
};

/// The fewest digits that read back. Uses the C library, because not every C++ library that Halvo
/// is built with converts floats; its decimal separator depends on the locale.
Decimal shortestDecimal(float magnitude) {
    std::array<char, 64> text{};
    for (int digits = 1; digits <= kMostDigits; ++digits) {
        (void)std::snprintf(text.data(), text.size(), "%.*e", digits - 1,
                            static_cast<double>(magnitude));
        if (std::strtof(text.data(), nullptr) == magnitude) break;
    }
    const std::string written(text.data());
    const auto mark = written.find('e');
    Decimal decimal;
    std::ranges::copy_if(written.substr(0, mark), std::back_inserter(decimal.digits),
                         [](char character) { return character >= '0' && character <= '9'; });
    const bool isSigned = written[mark + 1] == '+';
    (void)std::from_chars(written.data() + mark + (isSigned ? 2 : 1),
                          written.data() + written.size(), decimal.exponent);
    return decimal;
}

std::string plainText(const Decimal& decimal) {
    const auto& digits = decimal.digits;
    if (decimal.exponent < 0) {
        return "0." + std::string(static_cast<std::size_t>(-decimal.exponent) - 1, '0') + digits;
    }
    const auto whole = static_cast<std::size_t>(decimal.exponent) + 1;
    if (digits.size() <= whole) return digits + std::string(whole - digits.size(), '0') + ".0";
    return digits.substr(0, whole) + "." + digits.substr(whole);
}

std::string exponentText(const Decimal& decimal) {
    std::string text = decimal.digits.substr(0, 1);
    if (decimal.digits.size() > 1) text += "." + decimal.digits.substr(1);
    const auto size = std::to_string(std::abs(decimal.exponent));
    return text + (decimal.exponent < 0 ? "e-" : "e+") + (size.size() < 2 ? "0" : "") + size;
}

} // namespace

std::string numberText(float value) {
    if (std::isnan(value)) return "nan";
    const std::string sign = std::signbit(value) ? "-" : "";
    if (std::isinf(value)) return sign + "inf";
    const float magnitude = std::fabs(value);
    const bool plain = magnitude == 0.0F || (magnitude >= 1e-4F && magnitude < 16777216.0F);
    const auto decimal = shortestDecimal(magnitude);
    return sign + (plain ? plainText(decimal) : exponentText(decimal));
}

} // namespace halvo
