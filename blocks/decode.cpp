// One function a format turns a block into 16 RGBA texels of the wanted type; one loop puts the blocks in their places.
#include "blocks/decode.hpp"

#include <algorithm>
#include <type_traits>

#include "blocks/decode_bc1.hpp"
#include "blocks/decode_bc2.hpp"
#include "blocks/decode_bc3.hpp"
#include "blocks/decode_bc4.hpp"
#include "blocks/decode_bc6h.hpp"
#include "blocks/decode_bc7.hpp"
#include "blocks/half_float.hpp"
#include "blocks/image_size.hpp"

namespace blocks {
namespace {

template <typename VALUE>
using TEXELS = VALUE[16][4];

template <typename VALUE>
using BLOCK_DECODER = void (*)(std::uint8_t const*, TEXELS<VALUE>&);

template <typename VALUE>
constexpr VALUE opaque = 1;
template <>
constexpr std::uint8_t opaque<std::uint8_t> = 255;

/// A decoder with 8-bit results, made to give floats as well.
template <void (*decode)(std::uint8_t const*, TEXELS<std::uint8_t>&), typename VALUE>
void decode_bytes(std::uint8_t const* block, TEXELS<VALUE>& texels) {
    if constexpr (std::is_same_v<VALUE, std::uint8_t>) {
        decode(block, texels);
    } else {
        TEXELS<std::uint8_t> bytes;
        decode(block, bytes);
        for (int i = 0; i < 16; ++i) {
            for (int c = 0; c < 4; ++c) {
                texels[i][c] = static_cast<float>(bytes[i][c]) / 255;
            }
        }
    }
}

/// BC4 with one channel, BC5 with two.
template <bool is_signed, int channels, typename VALUE>
void decode_channels(std::uint8_t const* block, TEXELS<VALUE>& texels) {
    for (auto& texel : texels) {
        texel[0] = texel[1] = texel[2] = 0;
        texel[3] = opaque<VALUE>;
    }
    for (int c = 0; c < channels; ++c) {
        VALUE values[16];
        if constexpr (is_signed) {
            decode_bc4_snorm(block + 8 * c, values);
        } else {
            decode_bc4_unorm(block + 8 * c, values);
        }
        for (int i = 0; i < 16; ++i) {
            texels[i][c] = values[i];
        }
    }
}

template <bool is_signed, typename VALUE>
void decode_halves(std::uint8_t const* block, TEXELS<VALUE>& texels) {
    std::uint16_t halves[16][3];
    decode_bc6h(block, is_signed, halves);
    for (int i = 0; i < 16; ++i) {
        for (int c = 0; c < 3; ++c) {
            float const value = half_to_float(halves[i][c]);
            if constexpr (std::is_same_v<VALUE, std::uint8_t>) {
                texels[i][c] = static_cast<std::uint8_t>(std::clamp(value, 0.0f, 1.0f) * 255 + 0.5f);
            } else {
                texels[i][c] = value;
            }
        }
        texels[i][3] = opaque<VALUE>;
    }
}

template <typename VALUE>
BLOCK_DECODER<VALUE> block_decoder(FORMAT format) {
    switch (format) {
    case FORMAT::bc1:
        return decode_bytes<decode_bc1, VALUE>;
    case FORMAT::bc2:
        return decode_bytes<decode_bc2, VALUE>;
    case FORMAT::bc3:
        return decode_bytes<decode_bc3, VALUE>;
    case FORMAT::bc4_unorm:
        return decode_channels<false, 1, VALUE>;
    case FORMAT::bc4_snorm:
        return decode_channels<true, 1, VALUE>;
    case FORMAT::bc5_unorm:
        return decode_channels<false, 2, VALUE>;
    case FORMAT::bc5_snorm:
        return decode_channels<true, 2, VALUE>;
    case FORMAT::bc6h_uf16:
        return decode_halves<false, VALUE>;
    case FORMAT::bc6h_sf16:
        return decode_halves<true, VALUE>;
    case FORMAT::bc7:
        return decode_bytes<decode_bc7, VALUE>;
    }
    return nullptr;
}

template <typename VALUE>
bool decode_image(FORMAT format, std::span<std::uint8_t const> blocks, std::uint32_t width, std::uint32_t height,
                  std::span<VALUE> texels) {
    BLOCK_DECODER<VALUE> const decode_block = block_decoder<VALUE>(format);
    auto const block_bytes = block_bytes_of_image(format, width, height);
    auto const values = rgba_values_of_image(width, height);
    if (decode_block == nullptr || width == 0 || height == 0 || !block_bytes || blocks.size() < *block_bytes || !values ||
        texels.size() < *values) {
        return false;
    }
    std::uint8_t const* block = blocks.data();
    std::size_t const pitch = std::size_t{width} * 4;
    for (std::size_t y = 0; y < height; y += block_side) {
        std::size_t const rows = std::min<std::size_t>(block_side, height - y);
        for (std::size_t x = 0; x < width; x += block_side) {
            std::size_t const columns = std::min<std::size_t>(block_side, width - x);
            TEXELS<VALUE> decoded;
            decode_block(block, decoded);
            block += bytes_per_block(format);
            for (std::size_t row = 0; row < rows; ++row) {
                std::copy_n(&decoded[row * block_side][0], columns * 4, &texels[(y + row) * pitch + x * 4]);
            }
        }
    }
    return true;
}

}  // namespace

bool decode_image_rgba8(FORMAT format, std::span<std::uint8_t const> blocks, std::uint32_t width, std::uint32_t height,
                        std::span<std::uint8_t> texels) {
    return decode_image(format, blocks, width, height, texels);
}

bool decode_image_rgba32f(FORMAT format, std::span<std::uint8_t const> blocks, std::uint32_t width,
                          std::uint32_t height, std::span<float> texels) {
    return decode_image(format, blocks, width, height, texels);
}

}  // namespace blocks
