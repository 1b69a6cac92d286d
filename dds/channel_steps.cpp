#include "dds/channel_steps.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

namespace {

/// One result for each pair of a colour and an alpha, at [alpha × 256 + colour].
using PRODUCTS = std::array<std::uint8_t, 65536>;

/// Two bytes, in bits 0 to 7 and 16 to 23, times alpha / 255, rounded: the quotient by 255 as the sum of those by 256
/// and 65536, which is exact here, and no carry leaves its sixteen bits.
std::uint32_t scale_pair(std::uint32_t pair, std::uint32_t alpha) {
    std::uint32_t const products = pair * alpha + 0x00800080U;
    return ((products + ((products >> 8) & 0x00ff00ffU)) >> 8) & 0x00ff00ffU;
}

/// Colours times alpha / 255, rounded, one texel as a word: compilers make vector code of it.
void multiply_as_is(std::span<std::uint8_t> texels) {
    constexpr bool is_little = std::endian::native == std::endian::little;
    for (std::size_t at = 0; at + 4 <= texels.size(); at += 4) {
        std::uint32_t texel = 0;
        std::memcpy(&texel, texels.data() + at, 4);
        std::uint32_t const alpha = is_little ? texel >> 24 : texel & 255;
        // 255 × alpha / 255 puts alpha itself in its place again.
        texel |= is_little ? 0xff000000U : 0xffU;
        texel = scale_pair(texel & 0x00ff00ffU, alpha) | scale_pair((texel >> 8) & 0x00ff00ffU, alpha) << 8;
        std::memcpy(texels.data() + at, &texel, 4);
    }
}

std::uint8_t gamma_product(unsigned colour, unsigned alpha) {
    double const product = std::pow(colour / 255.0, 2.2) * (alpha / 255.0);
    return static_cast<std::uint8_t>(std::min(std::floor(std::pow(product, 1.0 / 2.2) * 255.0 + 0.5), 255.0));
}

std::unique_ptr<PRODUCTS const> make_gamma_products() {
    auto products = std::make_unique<PRODUCTS>();
    for (unsigned alpha = 0; alpha < 256; ++alpha) {
        for (unsigned colour = 0; colour < 256; ++colour)
            (*products)[alpha * 256 + colour] = gamma_product(colour, alpha);
    }
    return products;
}

template <typename STEP>
void for_each_texel(IMAGE_LOADER::IMAGE& image, STEP step) {
    for (std::uint32_t level = 0; level < image.number_of_mips(); ++level) {
        std::span<std::uint8_t> const texels = image.level(level);
        for (std::size_t i = 0; i + 4 <= texels.size(); i += 4)
            step(texels.data() + i);
    }
}

}  // namespace

void premultiply_alpha(IMAGE_LOADER::IMAGE& image, bool need_gamma_correction) {
    if (!need_gamma_correction) {
        for (std::uint32_t level = 0; level < image.number_of_mips(); ++level)
            multiply_as_is(image.level(level));
        return;
    }
    static std::unique_ptr<PRODUCTS const> const table = make_gamma_products();
    for_each_texel(image, [](std::uint8_t* texel) {
        std::uint8_t const* const of_alpha = table->data() + std::size_t{256} * texel[3];
        texel[0] = of_alpha[texel[0]];
        texel[1] = of_alpha[texel[1]];
        texel[2] = of_alpha[texel[2]];
    });
}

void shuffle_parallax_channels(IMAGE_LOADER::IMAGE& image) {
    for_each_texel(image, [](std::uint8_t* texel) {
        texel[0] = texel[3];
        texel[3] = texel[2];
        texel[2] = 255;
    });
}
