// IEEE 754 binary16 to binary32: the texels of HDR blocks are half floats, and C++20 has no type for them. Every half
// is exactly a float, so this direction needs no rounding rule.
#pragma once

#include <bit>
#include <cstdint>

namespace blocks {

/// The float with the same value as the half whose bits are `half`; infinities and NaN are kept.
constexpr float half_to_float(std::uint16_t half) {
    std::uint32_t const sign = static_cast<std::uint32_t>(half & 0x8000u) << 16;
    std::uint32_t const exponent = (half >> 10) & 0x1Fu;
    std::uint32_t const mantissa = half & 0x3FFu;
    if (exponent == 0) {
        float const magnitude = static_cast<float>(mantissa) * 0x1p-24f;
        return sign != 0 ? -magnitude : magnitude;
    }
    std::uint32_t const float_exponent = exponent == 31 ? 255u : exponent + 112u;
    return std::bit_cast<float>(sign | float_exponent << 23 | mantissa << 13);
}

}  // namespace blocks
