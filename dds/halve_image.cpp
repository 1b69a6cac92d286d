#include "dds/halve_image.hpp"

#include "dds/working_image.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace {

/// The texels that one of the half covers: upper left and right, lower left and right.
using BLOCK = std::array<std::uint8_t const*, 4>;

/// `right` is how far the right texel of a pair lies from the left one.
void average_as_is(std::uint8_t const* upper, std::uint8_t const* lower, std::size_t right, std::size_t texels,
                   std::uint8_t* out) {
    for (std::size_t x = 0; x < texels; ++x, upper += 8, lower += 8, out += 4) {
        for (std::size_t channel = 0; channel < 4; ++channel) {
            unsigned const sum = 2U + upper[channel] + upper[right + channel] + lower[channel] + lower[right + channel];
            out[channel] = static_cast<std::uint8_t>(sum / 4);
        }
    }
}

void average_in_linear_light(BLOCK const& block, GAMMA_CURVE const& curve, std::uint8_t* out) {
    for (std::size_t channel = 0; channel < 3; ++channel) {
        float const sum = curve.to_linear(block[0][channel]) + curve.to_linear(block[1][channel]) +
                          curve.to_linear(block[2][channel]) + curve.to_linear(block[3][channel]);
        out[channel] = curve.to_byte(sum * 0.25F);
    }
    float alpha = 0.0F;
    for (std::uint8_t const* texel : block)
        alpha += static_cast<float>(texel[3]) * one_255th;
    out[3] = static_cast<std::uint8_t>(std::min(alpha * 0.25F * 255.0F + 0.5F, 255.0F));
}

}  // namespace

IMAGE_LOADER::IMAGE halve_image(IMAGE_LOADER::IMAGE const& source, GAMMA_CURVE const* curve) {
    std::size_t const source_width = source.width();
    std::size_t const source_height = source.height();
    std::uint32_t const width = std::max(source.width() / 2, 1U);
    std::uint32_t const height = std::max(source.height() / 2, 1U);
    IMAGE_LOADER::IMAGE half = make_working_image(width, height, 1, source.texel_format(), source.image_format());
    std::size_t const pitch = source.get_image_info().surfaces[0].row_pitch;
    std::uint8_t const* const texels = source.level(0).data();
    std::uint8_t* out = half.level(0).data();
    // Only a side of one texel has no second column or row; a larger odd one leaves its last out.
    std::size_t const right = source_width > 1 ? 4 : 0;
    std::size_t const below = source_height > 1 ? pitch : 0;
    for (std::size_t y = 0; y < height; ++y, out += std::size_t{4} * width) {
        std::uint8_t const* const upper = texels + 2 * y * pitch;
        std::uint8_t const* const lower = upper + below;
        if (curve == nullptr) {
            average_as_is(upper, lower, right, width, out);
            continue;
        }
        for (std::size_t x = 0; x < width; ++x) {
            std::size_t const left = 8 * x;
            average_in_linear_light({upper + left, upper + left + right, lower + left, lower + left + right}, *curve,
                                    out + 4 * x);
        }
    }
    return half;
}
