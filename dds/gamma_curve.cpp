#include "dds/gamma_curve.hpp"

#include <cmath>
#include <limits>

namespace {

/// A power in single precision, taken in double precision and rounded: a library's own single-precision power may
/// differ in the last bit from one processor to the next.
float power(float base, float exponent) {
    return static_cast<float>(std::pow(static_cast<double>(base), static_cast<double>(exponent)));
}

int rounded_byte(float linear, float exponent) {
    float const scaled = power(linear, 1.0F / exponent) * 255.0F;
    return static_cast<int>(std::min(scaled + 0.5F, 255.0F));
}

}  // namespace

GAMMA_CURVE::GAMMA_CURVE(float exponent) {
    for (int value = 0; value < 256; ++value)
        linear_[static_cast<std::size_t>(value)] = power(static_cast<float>(value) * one_255th, exponent);

    // A step is found by halving a range of bits.
    for (int step = 0; step < 255; ++step) {
        std::uint32_t below = std::bit_cast<std::uint32_t>(0.0F);
        std::uint32_t above = std::bit_cast<std::uint32_t>(2.0F);
        while (above - below > 1) {
            std::uint32_t const middle = below + (above - below) / 2;
            bool const reached = rounded_byte(std::bit_cast<float>(middle), exponent) > step;
            (reached ? above : below) = middle;
        }
        steps_[static_cast<std::size_t>(step)] = std::bit_cast<float>(above);
    }
    steps_.back() = std::numeric_limits<float>::infinity();

    // The first bucket begins at 0, whatever its number says.
    reached_[0] = 0;
    std::size_t byte = 0;
    for (std::uint32_t i = 1; i < reached_.size(); ++i) {
        while (steps_[byte] <= std::bit_cast<float>((first_bucket + i) << dropped_bits))
            ++byte;
        reached_[i] = static_cast<std::uint8_t>(byte);
    }
}

GAMMA_CURVE const& GAMMA_CURVE::standard() {
    static GAMMA_CURVE const curve(standard_exponent);
    return curve;
}
