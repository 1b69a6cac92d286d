// Finds places for rectangles in a page: grid first fit. A rectangle of w × h texels goes to the first cell, row by
// row, of a grid of w × h cells that no rectangle placed before blocks.
//
// What "blocks" means is peculiar, and kept: on each axis a cell's first or last texel must lie within the placed
// rectangle. A cell that reaches over a placed rectangle on both of its sides is not blocked by it, and then covers it.
// Both axes together ask for nothing else than this: one of the cell's four corner texels is covered. So one bit per
// texel says all there is to know of the rectangles placed, and testing a cell takes the same time however many they
// are. The rule's own way over a row, jumping ahead by a quotient that the blocker and the candidate give, never jumps
// over a cell that is free, so that looking at every cell in turn finds the same one. And what is covered stays
// covered: for each size the search goes on where the last one of that size ended.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

/// Texels; right and bottom lie just outside.
struct PLACED_RECTANGLE {
    std::int32_t left = 0;
    std::int32_t right = 0;
    std::int32_t top = 0;
    std::int32_t bottom = 0;

    friend bool operator==(PLACED_RECTANGLE const&, PLACED_RECTANGLE const&) = default;
};

struct PAGE_EXTENTS {
    std::int32_t width = 0;
    std::int32_t height = 0;

    friend bool operator==(PAGE_EXTENTS const&, PAGE_EXTENTS const&) = default;
};

class ATLAS_PACKER_2D {
public:
    /// Sides of at least 1 and at most `max_texture_extent`.
    ATLAS_PACKER_2D(std::int32_t width, std::int32_t height);

    /// The place that a rectangle of these sides (at least 1) gets; nothing when the page has none, or fewer texels
    /// left over than the rectangle has. Texels that are covered twice count twice.
    std::optional<PLACED_RECTANGLE> insert(std::int32_t width, std::int32_t height);

    /// Whether some texel is covered twice.
    bool has_overlaps() const;

    /// The page halved as often as the half that goes holds nothing, by the same test: first its width, then its
    /// height.
    PAGE_EXTENTS shrunk_extents() const;

private:
    bool is_covered(std::int32_t x, std::int32_t y) const;
    bool is_blocked(PLACED_RECTANGLE const& area) const;
    void cover(PLACED_RECTANGLE const& area);

    std::int32_t width_;
    std::int32_t height_;
    std::int64_t remaining_texels_;
    std::size_t words_per_row_;
    /// One bit a texel, rows of whole words.
    std::vector<std::uint64_t> covered_;
    /// Size → number of the first cell of its grid that is not known to be blocked.
    std::map<std::pair<std::int32_t, std::int32_t>, std::int64_t> first_open_cell_;
};
