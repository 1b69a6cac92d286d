#include "atlas/atlas_packer_2d.hpp"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace {

constexpr std::int32_t word_bits = 64;

}  // namespace

ATLAS_PACKER_2D::ATLAS_PACKER_2D(std::int32_t width, std::int32_t height)
    : width_(width),
      height_(height),
      remaining_texels_(std::int64_t{width} * height),
      words_per_row_((static_cast<std::size_t>(width) + word_bits - 1) / word_bits),
      covered_(words_per_row_ * static_cast<std::size_t>(height)) {
}

bool ATLAS_PACKER_2D::is_covered(std::int32_t x, std::int32_t y) const {
    std::size_t const word = static_cast<std::size_t>(y) * words_per_row_ + static_cast<std::size_t>(x / word_bits);
    return (covered_[word] >> (x % word_bits) & 1) != 0;
}

bool ATLAS_PACKER_2D::is_blocked(PLACED_RECTANGLE const& area) const {
    return is_covered(area.left, area.top) || is_covered(area.right - 1, area.top) ||
           is_covered(area.left, area.bottom - 1) || is_covered(area.right - 1, area.bottom - 1);
}

void ATLAS_PACKER_2D::cover(PLACED_RECTANGLE const& area) {
    for (std::int32_t x = area.left; x < area.right;) {
        std::int32_t const first = x % word_bits;
        std::int32_t const count = std::min(word_bits - first, area.right - x);
        std::uint64_t const bits = ~std::uint64_t{0} >> (word_bits - count) << first;
        std::size_t const column = static_cast<std::size_t>(x / word_bits);
        for (std::int32_t y = area.top; y < area.bottom; ++y)
            covered_[static_cast<std::size_t>(y) * words_per_row_ + column] |= bits;
        x += count;
    }
}

std::optional<PLACED_RECTANGLE> ATLAS_PACKER_2D::insert(std::int32_t width, std::int32_t height) {
    std::int64_t const texels = std::int64_t{width} * height;
    if (texels > remaining_texels_ || width > width_ || height > height_)
        return std::nullopt;
    std::int32_t const columns = width_ / width;
    std::int64_t const cells = std::int64_t{columns} * (height_ / height);
    std::int64_t& cell = first_open_cell_[{width, height}];
    for (; cell < cells; ++cell) {
        auto const left = static_cast<std::int32_t>(cell % columns) * width;
        auto const top = static_cast<std::int32_t>(cell / columns) * height;
        PLACED_RECTANGLE const area = {left, left + width, top, top + height};
        if (is_blocked(area))
            continue;
        cover(area);
        remaining_texels_ -= texels;
        return area;
    }
    return std::nullopt;
}

bool ATLAS_PACKER_2D::has_overlaps() const {
    std::int64_t covered = 0;
    for (std::uint64_t const bits : covered_)
        covered += std::popcount(bits);
    return covered + remaining_texels_ != std::int64_t{width_} * height_;
}

PAGE_EXTENTS ATLAS_PACKER_2D::shrunk_extents() const {
    PAGE_EXTENTS extents = {width_, height_};
    while (extents.width >= 2 && !is_blocked({extents.width / 2, extents.width, 0, extents.height}))
        extents.width /= 2;
    while (extents.height >= 2 && !is_blocked({0, extents.width, extents.height / 2, extents.height}))
        extents.height /= 2;
    return extents;
}
