#include "dds/channel_steps.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace {

/// One result for each pair of a colour and an alpha, at [alpha × 256 + colour].
using PRODUCTS = std::array<std::uint8_t, 65536>;

std::uint8_t plain_product(unsigned colour, unsigned alpha) {
    // colour × alpha / 255 never lies half way between two whole numbers, so adding half before dividing is exact.
    return static_cast<std::uint8_t>((2 * colour * alpha + 255) / 510);
}

std::uint8_t gamma_product(unsigned colour, unsigned alpha) {
    double const product = std::pow(colour / 255.0, 2.2) * (alpha / 255.0);
    return static_cast<std::uint8_t>(std::min(std::floor(std::pow(product, 1.0 / 2.2) * 255.0 + 0.5), 255.0));
}

template <typename PRODUCT>
std::unique_ptr<PRODUCTS const> make_products(PRODUCT product) {
    auto products = std::make_unique<PRODUCTS>();
    for (unsigned alpha = 0; alpha < 256; ++alpha) {
        for (unsigned colour = 0; colour < 256; ++colour)
            (*products)[alpha * 256 + colour] = product(colour, alpha);
    }
    return products;
}

PRODUCTS const& products(bool need_gamma_correction) {
    if (need_gamma_correction) {
        static std::unique_ptr<PRODUCTS const> const gamma = make_products(gamma_product);
        return *gamma;
    }
    static std::unique_ptr<PRODUCTS const> const plain = make_products(plain_product);
    return *plain;
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
    PRODUCTS const& table = products(need_gamma_correction);
    for_each_texel(image, [&](std::uint8_t* texel) {
        std::uint8_t const* const of_alpha = table.data() + std::size_t{256} * texel[3];
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
