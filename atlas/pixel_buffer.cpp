#include "atlas/pixel_buffer.hpp"

#include "platform/checked_size.hpp"
#include "platform/dds_container/dds_container.hpp"

#include <algorithm>
#include <cstring>

using checked_size::memory_size;
using dds_container::level_side;

PIXEL_BUFFER::PIXEL_BUFFER(D3D_FORMAT format, std::uint32_t width, std::uint32_t height, std::uint32_t levels,
                           std::uint32_t slices)
    : format_(format),
      width_(width),
      height_(height),
      slices_(slices) {
    std::uint64_t const bits = bits_per_texel(format);
    std::uint64_t offset = 0;
    for (std::uint32_t level = 0; level < levels; ++level) {
        std::uint64_t const across = level_side(width, level);
        std::uint64_t const down = level_side(height, level);
        bool const has_blocks = is_dxt_format(format);
        LEVEL placed;
        placed.offset = memory_size(offset);
        placed.row_pitch = memory_size(has_blocks ? (across + 3) / 4 * bits * 2 : across * bits / 8);
        placed.slice_bytes = memory_size(placed.row_pitch, has_blocks ? (down + 3) / 4 : down);
        offset = checked_size::saturating_sum(offset, checked_size::saturating_product(placed.slice_bytes, slices));
        levels_.push_back(placed);
    }
    bytes_.resize(memory_size(offset));
}

std::span<std::uint8_t> PIXEL_BUFFER::slice(std::uint32_t level, std::uint32_t slice) {
    LEVEL const& placed = levels_[level];
    return std::span(bytes_).subspan(placed.offset + slice * placed.slice_bytes, placed.slice_bytes);
}

std::span<std::uint8_t const> PIXEL_BUFFER::slice(std::uint32_t level, std::uint32_t slice) const {
    LEVEL const& placed = levels_[level];
    return std::span(bytes_).subspan(placed.offset + slice * placed.slice_bytes, placed.slice_bytes);
}

void copy_level(PIXEL_BUFFER const& source, std::uint32_t level, PIXEL_BUFFER& target, COPY_TARGET const& area) {
    std::uint64_t const right = std::uint64_t{area.left} + area.width;
    std::uint64_t const bottom = std::uint64_t{area.top} + area.height;
    if (right > level_side(target.width(), area.level) || bottom > level_side(target.height(), area.level))
        return;
    std::size_t const bits = bits_per_texel(source.format());
    std::size_t row_bytes = bits * area.width / 8;
    std::size_t left_bytes = bits * area.left / 8;
    std::size_t rows = area.height;
    std::size_t top = area.top;
    if (is_dxt_format(source.format())) {
        // One row is a row of blocks, which holds the bits of four rows of texels.
        rows /= 4;
        row_bytes *= 4;
        top /= 4;
        left_bytes = area.left / 4 * bits * 2;
    }
    std::span<std::uint8_t const> const from = source.slice(level, 0);
    std::span<std::uint8_t> const to = target.slice(area.level, area.slice);
    std::size_t const from_pitch = source.row_pitch(level);
    std::size_t const to_pitch = target.row_pitch(area.level);
    if (row_bytes == 0 || row_bytes > from_pitch || left_bytes + row_bytes > to_pitch ||
        rows * from_pitch > from.size() || (top + rows) * to_pitch > to.size())
        return;
    for (std::size_t row = 0; row < rows; ++row)
        std::memcpy(to.data() + (top + row) * to_pitch + left_bytes, from.data() + row * from_pitch, row_bytes);
}
