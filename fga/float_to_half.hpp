// IEEE 754 binary32 to binary16, as the textures of vector fields have it. The rule is the engine's own, so that
// its half floats and those of a texture are the same: ties go toward zero, NaN becomes infinity, and among the
// subnormals a remainder must be above one half by more than 512 parts in 2^23 before it rounds up.
#pragma once

#include <bit>
#include <cstdint>

/// The bits of the half that stands for `value`.
constexpr std::uint16_t float_to_half(float value) {
    std::uint32_t const bits = std::bit_cast<std::uint32_t>(value);
    std::uint32_t const sign = (bits >> 16) & 0x8000;
    std::uint32_t const magnitude = bits & 0x7FFFFFFF;
    std::uint32_t const exponent = magnitude >> 23;
    std::uint32_t const fraction = magnitude & 0x7FFFFF;
    std::uint32_t half = 0;
    if (exponent > 142) {
        half = 0x7C00;
    } else if (exponent > 112) {
        // Adding the dropped bits without their lowest one carries exactly when they are more than half of the last
        // place that is kept.
        std::uint32_t const rounded = magnitude + ((magnitude - 1) & magnitude & 0x1FFF);
        half = ((((rounded >> 23) + 16) << 10) & 0xFFFF) | ((rounded >> 13) & 0x3FF);
    } else if (exponent < 103) {
        half = magnitude > 0x33000400 ? 1 : 0;
    } else {
        std::uint32_t const kept_above = exponent - 103;
        std::uint32_t const dropped = 126 - exponent;
        std::uint32_t carry = 0;
        if (((fraction << kept_above) & 0x3FFFFF) >= 513) {
            std::uint32_t const rest = (0x7FFFFFu >> kept_above) & fraction;
            carry = (rest - 1) & rest;
        }
        half = (fraction + carry + 0x800000) >> dropped;
    }
    return static_cast<std::uint16_t>(sign | half);
}
