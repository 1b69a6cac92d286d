// A power curve between 8-bit values and linear light in single precision. Values come from tables: 256 for the way to
// linear light, and for the way back the 255 points at which the rounded result steps from one byte to the next, so
// both ways give exactly what the formulas give, without a power in the inner loop.
#pragma once

#include <array>
#include <cstdint>

/// What 8-bit values are multiplied with, in single precision, to lie in 0…1.
inline constexpr float one_255th = 0.003921569F;

class GAMMA_CURVE {
public:
    explicit GAMMA_CURVE(float exponent);

    /// (value × 1/255) to the power of the exponent.
    float to_linear(std::uint8_t value) const { return linear_[value]; }

    /// `linear`, at least 0, to the power of 1 / exponent, times 255, rounded half away from zero, at most 255.
    std::uint8_t to_byte(float linear) const;

    /// The curve of the exponent 2.2 that all conversions use, made once.
    static GAMMA_CURVE const& standard();

private:
    std::array<float, 256> linear_;
    /// steps_[i] is the smallest linear value that becomes i + 1 or more.
    std::array<float, 255> steps_;
};
