// The rule of the half conversion once more, in numbers instead of bits: what it gives follows from the distance of a
// value to the halves around it.
#pragma once

#include <cmath>
#include <cstdint>

/// The half for the magnitude `value` (not negative; NaN too), without its sign.
inline std::uint16_t half_by_rule(float value) {
    constexpr std::uint16_t infinity = 0x7C00;
    if (!(value < 65536.0F))
        return infinity;
    double const smallest_normal = std::ldexp(1.0, -14);
    bool const is_normal = value >= smallest_normal;
    // Halves of one binade stand in equal steps, and all subnormals in steps of 2^-24.
    double const step = is_normal ? std::ldexp(1.0, std::ilogb(value) - 10) : std::ldexp(1.0, -24);
    double const steps = std::floor(value / step);
    double const rest = value / step - steps;
    bool const rounds_up = is_normal ? rest > 0.5 : rest > 0.5 + 512.0 / (1 << 23);
    auto const count = static_cast<std::uint32_t>(steps) + (rounds_up ? 1 : 0);
    if (!is_normal)
        return static_cast<std::uint16_t>(count);
    // A normal half of the lowest binade counts 1024 to 2047 steps; each further binade adds 1024 halves.
    auto const binade = static_cast<std::uint32_t>(std::ilogb(value) + 14);
    return static_cast<std::uint16_t>(binade * 1024 + count);
}
