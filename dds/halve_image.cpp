#include "dds/halve_image.hpp"

#include "dds/working_image.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace {

using BLOCK = std::array<std::uint8_t const*, 4>;

void average_as_is(BLOCK const& block, std::uint8_t* out) {
    for (std::size_t channel = 0; channel < 4; ++channel) {
        unsigned const sum = 2U + block[0][channel] + block[1][channel] + block[2][channel] + block[3][channel];
        out[channel] = static_cast<std::uint8_t>(sum / 4);
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
    for (std::size_t y = 0; y < height; ++y) {
        std::uint8_t const* const upper = texels + 2 * y * pitch;
        std::uint8_t const* const lower = texels + std::min(2 * y + 1, source_height - 1) * pitch;
        for (std::size_t x = 0; x < width; ++x, out += 4) {
            std::size_t const left = 4 * (2 * x);
            std::size_t const right = 4 * std::min(2 * x + 1, source_width - 1);
            BLOCK const block = {upper + left, upper + right, lower + left, lower + right};
            if (curve != nullptr)
                average_in_linear_light(block, *curve, out);
            else
                average_as_is(block, out);
        }
    }
    return half;
}
