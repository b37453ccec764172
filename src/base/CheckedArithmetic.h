#pragma once

#include <concepts>

namespace halvo {

/// a × b; an overflow ends the process, in release builds too. Any thread, real-time safe.
template <std::integral T> constexpr T checkedMultiply(T a, T b) noexcept {
    T result{};
    if (__builtin_mul_overflow(a, b, &result)) __builtin_trap();
    return result;
}

/// a + b; an overflow ends the process, in release builds too. Any thread, real-time safe.
template <std::integral T> constexpr T checkedAdd(T a, T b) noexcept {
    T result{};
    if (__builtin_add_overflow(a, b, &result)) __builtin_trap();
    return result;
}

/// A count that must not be negative; a negative one ends the process, in release builds too.
template <std::signed_integral T> constexpr T checkedCount(T count) noexcept {
    if (count < 0) __builtin_trap();
    return count;
}

} // namespace halvo
