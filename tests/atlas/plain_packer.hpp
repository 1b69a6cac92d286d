// The packing rule word for word, with a list of the rectangles placed: what the packer that ships is held against, in
// results here and in time by bench_atlas.
#pragma once

#include "atlas/atlas_packer_2d.hpp"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

class PLAIN_PACKER {
public:
    PLAIN_PACKER(std::int32_t width, std::int32_t height)
        : width_(width),
          height_(height),
          budget_(std::int64_t{width} * height) {}

    std::optional<PLACED_RECTANGLE> insert(std::int32_t w, std::int32_t h) {
        if (std::int64_t{w} * h > budget_ || h > height_)
            return std::nullopt;
        for (std::int32_t row = 0; (row + 1) * h <= height_; ++row) {
            for (std::int32_t column = 0; (column + 1) * w <= width_;) {
                PLACED_RECTANGLE const candidate = {column * w, (column + 1) * w, row * h, (row + 1) * h};
                PLACED_RECTANGLE const* const blocker = find_blocker(candidate);
                if (blocker == nullptr) {
                    placed_.push_back(candidate);
                    budget_ -= std::int64_t{w} * h;
                    return candidate;
                }
                float const quotient = static_cast<float>(blocker->right) / static_cast<float>(candidate.right) - 1.0F;
                column += static_cast<std::int32_t>(std::ceil(std::max(quotient, 0.0F))) + 1;
            }
        }
        return std::nullopt;
    }

    bool is_empty() const { return placed_.empty(); }

    PAGE_EXTENTS shrunk_extents() const {
        PAGE_EXTENTS extents = {width_, height_};
        while (extents.width >= 2 && !find_blocker({extents.width / 2, extents.width, 0, extents.height}))
            extents.width /= 2;
        while (extents.height >= 2 && !find_blocker({0, extents.width, extents.height / 2, extents.height}))
            extents.height /= 2;
        return extents;
    }

private:
    static bool overlap(std::int32_t start, std::int32_t end, std::int32_t placed_start, std::int32_t placed_end) {
        return (placed_start <= start && start < placed_end) || (placed_start < end && end <= placed_end);
    }

    PLACED_RECTANGLE const* find_blocker(PLACED_RECTANGLE const& candidate) const {
        for (PLACED_RECTANGLE const& placed : placed_) {
            if (overlap(candidate.left, candidate.right, placed.left, placed.right) &&
                overlap(candidate.top, candidate.bottom, placed.top, placed.bottom))
                return &placed;
        }
        return nullptr;
    }

    std::int32_t width_;
    std::int32_t height_;
    std::int64_t budget_;
    std::vector<PLACED_RECTANGLE> placed_;
};

/// A page number and a place in it; page −1 for a size that no page takes.
using PLAIN_PLACE = std::pair<int, PLACED_RECTANGLE>;

/// First fit over pages, for sizes in packing order.
inline std::vector<PLAIN_PLACE> pack_plainly(std::vector<PAGE_EXTENTS> const& sizes, PAGE_EXTENTS page,
                                             std::vector<PLAIN_PACKER>& pages) {
    std::vector<PLAIN_PLACE> places;
    for (PAGE_EXTENTS const size : sizes) {
        PLAIN_PLACE place = {-1, {}};
        for (std::size_t i = 0; i <= pages.size() && place.first < 0; ++i) {
            bool const is_new = i == pages.size();
            if (is_new)
                pages.emplace_back(page.width, page.height);
            if (auto const found = pages[i].insert(size.width, size.height))
                place = {static_cast<int>(i), *found};
            if (is_new)
                break;
        }
        places.push_back(place);
    }
    return places;
}
