// A power curve between 8-bit values and linear light in single precision. Values come from tables: 256 for the way to
// linear light, and for the way back the 255 points at which the rounded result steps from one byte to the next, so
// both ways give exactly what the formulas give, without a power in the inner loop. The way back begins its search at
// an answer for the value's exponent and first bits of mantissa, which is at most one step short.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

/// What 8-bit values are multiplied with, in single precision, to lie in 0…1.
inline constexpr float one_255th = 0.003921569F;

class GAMMA_CURVE {
public:
    explicit GAMMA_CURVE(float exponent);

    /// (value × 1/255) to the power of the exponent.
    float to_linear(std::uint8_t value) const { return linear_[value]; }

    /// `linear`, at least 0, to the power of 1 / exponent, times 255, rounded half away from zero, at most 255.
    std::uint8_t to_byte(float linear) const {
        std::size_t byte = reached_[bucket(linear)];
        byte += steps_[byte] <= linear;
        // For a curve that is steeper than those in use.
        while (steps_[byte] <= linear)
            ++byte;
        return static_cast<std::uint8_t>(byte);
    }

    /// The curve that all conversions use, made once.
    static GAMMA_CURVE const& standard();
    static constexpr float standard_exponent = 2.2F;

private:
    /// Floats that are not negative are ordered as their bits are. A bucket is all that share the exponent and nine
    /// bits of the mantissa, from 2^-32 to 2; what is smaller or larger goes to the first or last one.
    static constexpr int dropped_bits = 14;
    static constexpr std::uint32_t first_bucket = (127U - 32U) << (23 - dropped_bits);
    static constexpr std::uint32_t last_bucket = (128U << (23 - dropped_bits)) - 1;

    static std::size_t bucket(float linear) {
        return std::clamp(std::bit_cast<std::uint32_t>(linear) >> dropped_bits, first_bucket, last_bucket) -
               first_bucket;
    }

    std::array<float, 256> linear_;
    /// steps_[i] is the smallest linear value that becomes i + 1 or more; the last one, that no value reaches.
    std::array<float, 256> steps_;
    /// What the smallest value of a bucket becomes.
    std::array<std::uint8_t, last_bucket - first_bucket + 1> reached_;
};
