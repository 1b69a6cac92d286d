// Checks, and then some rows of blocks at a time. BC1 to BC5 go through their encoders in batches; those of 16 bytes
// are made of two halves of 8, each from an encoder of its own. BC6H and BC7 take whole rows.
#include "blocks/encode.hpp"

#include <algorithm>
#include <cstring>

#include "blocks/block_batch.hpp"
#include "blocks/encode_bc1.hpp"
#include "blocks/encode_bc2_alpha.hpp"
#include "blocks/encode_bc4.hpp"
#include "blocks/encode_bc6h.hpp"
#include "blocks/encode_bc7.hpp"
#include "blocks/image_size.hpp"

namespace blocks {
namespace {

constexpr std::uint32_t blocks_for_lanes = 512;

void store_half(std::uint64_t half, std::uint8_t* out) {
    for (int i = 0; i < 8; ++i) {
        out[i] = static_cast<std::uint8_t>(half >> (8 * i));
    }
}

/// Writes the first `count` blocks of a batch, each from one or two halves.
void store_blocks(std::uint64_t const (&first)[batch_blocks], std::uint64_t const* second, std::uint32_t count,
                  std::uint8_t* out) {
    for (std::uint32_t block = 0; block < count; ++block) {
        store_half(first[block], out);
        out += 8;
        if (second != nullptr) {
            store_half(second[block], out);
            out += 8;
        }
    }
}

/// Encodes a batch and writes its first `count` blocks.
void encode_batch(FORMAT format, BLOCK_BATCH const& batch, ENCODE_OPTIONS const& options, std::uint32_t count,
                  std::uint8_t* out) {
    std::uint64_t first[batch_blocks];
    std::uint64_t second[batch_blocks];
    bool const is_signed = format == FORMAT::bc4_snorm || format == FORMAT::bc5_snorm;
    BC1_SETTINGS colour = {options.effort, options.perceptual, false, 0};
    switch (format) {
    case FORMAT::bc1:
        colour.may_have_three_colours = true;
        colour.alpha_threshold = options.one_bit_alpha ? options.alpha_threshold : 0;
        encode_bc1(batch, colour, first);
        return store_blocks(first, nullptr, count, out);
    case FORMAT::bc2:
        encode_bc2_alpha(batch, first);
        encode_bc1(batch, colour, second);
        return store_blocks(first, second, count, out);
    case FORMAT::bc3:
        encode_bc4(batch, {options.effort, false, 3}, first);
        encode_bc1(batch, colour, second);
        return store_blocks(first, second, count, out);
    case FORMAT::bc4_unorm:
    case FORMAT::bc4_snorm:
        encode_bc4(batch, {options.effort, is_signed, 0}, first);
        return store_blocks(first, nullptr, count, out);
    case FORMAT::bc5_unorm:
    case FORMAT::bc5_snorm:
        encode_bc4(batch, {options.effort, is_signed, 0}, first);
        encode_bc4(batch, {options.effort, is_signed, 1}, second);
        return store_blocks(first, second, count, out);
    case FORMAT::bc6h_uf16:
    case FORMAT::bc6h_sf16:
    case FORMAT::bc7:
        break;
    }
}

bool is_half_float(FORMAT format) {
    return format == FORMAT::bc6h_uf16 || format == FORMAT::bc6h_sf16;
}

bool takes(FORMAT, RGBA8_VIEW const&) {
    return true;
}

bool takes(FORMAT format, RGBA16F_VIEW const&) {
    return is_half_float(format);
}

/// Bytes of a row of blocks, if the view and the rows make sense and `out` has room for them.
template <typename VIEW>
std::optional<std::size_t> checked_row_bytes(FORMAT format, VIEW const& image, std::uint32_t first_block_row,
                                             std::uint32_t block_row_count, std::size_t out_bytes) {
    constexpr std::size_t texel_bytes = sizeof(*image.texels) * 4;
    std::uint32_t const block_rows = blocks_across(image.height);
    auto const pitch = checked_product(image.width, texel_bytes);
    auto const row_bytes = block_bytes_of_image(format, image.width, 1);
    if (!takes(format, image) || image.texels == nullptr || image.width == 0 || image.height == 0 || !pitch ||
        image.row_pitch < *pitch || first_block_row > block_rows || block_row_count > block_rows - first_block_row ||
        !row_bytes) {
        return std::nullopt;
    }
    auto const bytes = checked_product(*row_bytes, block_row_count);
    return bytes && *bytes <= out_bytes ? row_bytes : std::nullopt;
}

void encode_part(FORMAT format, RGBA8_VIEW const& image, ENCODE_OPTIONS const& options, std::uint32_t first_block_row,
                 std::uint32_t block_row_count, std::uint8_t* out) {
    if (format == FORMAT::bc7) {
        return encode_bc7_rows(image, options, first_block_row, block_row_count, out);
    }
    if (is_half_float(format)) {
        return encode_bc6h_rows(image, format == FORMAT::bc6h_sf16, options, first_block_row, block_row_count, out);
    }
    std::uint32_t const columns = blocks_across(image.width);
    BLOCK_BATCH batch;
    for (std::uint32_t row = 0; row < block_row_count; ++row) {
        for (std::uint32_t column = 0; column < columns;) {
            std::uint32_t const count = std::min(batch_blocks, columns - column);
            gather_batch(image, column, first_block_row + row, count, batch);
            encode_batch(format, batch, options, count, out);
            out += count * bytes_per_block(format);
            column += count;
        }
    }
}

void encode_part(FORMAT format, RGBA16F_VIEW const& image, ENCODE_OPTIONS const& options, std::uint32_t first_block_row,
                 std::uint32_t block_row_count, std::uint8_t* out) {
    encode_bc6h_rows(image, format == FORMAT::bc6h_sf16, options, first_block_row, block_row_count, out);
}

template <typename VIEW>
bool encode_checked(FORMAT format, VIEW const& image, ENCODE_OPTIONS const& options, std::uint32_t first_block_row,
                    std::uint32_t block_row_count, int threads, std::span<std::uint8_t> out) {
    auto const row_bytes = checked_row_bytes(format, image, first_block_row, block_row_count, out.size());
    if (!row_bytes || threads < 1) {
        return false;
    }
    // Searches that fill their lanes with the blocks of several rows waste fewer of them, but every thread wants its
    // share.
    std::uint32_t const rows_for_lanes = std::max(1u, blocks_for_lanes / blocks_across(image.width));
    std::uint32_t const rows_for_threads = block_row_count / (4 * static_cast<std::uint32_t>(threads));
    std::uint32_t const rows = threads > 1 ? std::clamp(rows_for_threads, 1u, rows_for_lanes) : rows_for_lanes;
#pragma omp parallel for num_threads(threads) schedule(dynamic) if (threads > 1)
    for (std::uint32_t row = 0; row < block_row_count; row += rows) {
        encode_part(format, image, options, first_block_row + row, std::min(rows, block_row_count - row),
                    out.data() + row * *row_bytes);
    }
    return true;
}

}  // namespace

std::optional<std::size_t> encoded_bytes(FORMAT format, std::uint32_t width, std::uint32_t height) {
    return width == 0 || height == 0 ? std::nullopt : block_bytes_of_image(format, width, height);
}

bool encode_rows(FORMAT format, RGBA8_VIEW const& image, ENCODE_OPTIONS const& options, std::uint32_t first_block_row,
                 std::uint32_t block_row_count, std::span<std::uint8_t> out) {
    return encode_checked(format, image, options, first_block_row, block_row_count, 1, out);
}

bool encode_rows(FORMAT format, RGBA16F_VIEW const& image, ENCODE_OPTIONS const& options, std::uint32_t first_block_row,
                 std::uint32_t block_row_count, std::span<std::uint8_t> out) {
    return encode_checked(format, image, options, first_block_row, block_row_count, 1, out);
}

bool encode_image(FORMAT format, RGBA8_VIEW const& image, ENCODE_OPTIONS const& options, int threads,
                  std::span<std::uint8_t> out) {
    return encode_checked(format, image, options, 0, blocks_across(image.height), threads, out);
}

bool encode_image(FORMAT format, RGBA16F_VIEW const& image, ENCODE_OPTIONS const& options, int threads,
                  std::span<std::uint8_t> out) {
    return encode_checked(format, image, options, 0, blocks_across(image.height), threads, out);
}

}  // namespace blocks
