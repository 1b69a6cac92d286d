// The types that every encoder and decoder of this library shares: which format, how hard to try, and how a caller
// hands over texels. Plain views, no ownership: the caller's memory is read and written in place.
#pragma once

#include <cstddef>
#include <cstdint>

namespace blocks {

/// The block formats, named as the published format documents name them.
enum class FORMAT : std::uint8_t {
    bc1,
    bc2,
    bc3,
    bc4_unorm,
    bc4_snorm,
    bc5_unorm,
    bc5_snorm,
    bc6h_uf16,
    bc6h_sf16,
    bc7,
};

/// How hard an encoder tries. Each level is at least as good as the one before it, and slower.
enum class EFFORT : std::uint8_t { fast, normal, best };

/// Every format codes blocks of 4 × 4 texels.
inline constexpr std::uint32_t block_side = 4;

/// Bytes of one block: 8 for BC1 and BC4, 16 for all others.
constexpr std::size_t bytes_per_block(FORMAT format) {
    switch (format) {
    case FORMAT::bc1:
    case FORMAT::bc4_unorm:
    case FORMAT::bc4_snorm:
        return 8;
    default:
        return 16;
    }
}

/// Blocks that cover `side` texels; a side that is no multiple of 4 ends in a block that sticks out.
constexpr std::uint32_t blocks_across(std::uint32_t side) {
    return side / block_side + (side % block_side != 0);
}

/// Texels of 8 bits a channel in the byte order red, green, blue, alpha. Rows are `row_pitch` bytes apart.
struct RGBA8_VIEW {
    std::uint8_t const* texels = nullptr;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::size_t row_pitch = 0;
};

/// Texels of four IEEE half floats in the order red, green, blue, alpha. Rows are `row_pitch` bytes apart.
struct RGBA16F_VIEW {
    std::uint16_t const* texels = nullptr;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::size_t row_pitch = 0;
};

/// What a caller may ask of an encoder.
struct ENCODE_OPTIONS {
    EFFORT effort = EFFORT::normal;
    /// Weigh the channels by how well an eye tells them apart, instead of equally (colour formats only).
    bool perceptual = false;
    /// BC1 only: texels whose alpha is below `alpha_threshold` become transparent black.
    bool one_bit_alpha = false;
    std::uint8_t alpha_threshold = 128;
};

}  // namespace blocks
