#include "atlas/resample.hpp"

#include "platform/checked_size.hpp"

#include <algorithm>
#include <vector>

namespace {

/// The two texels of one axis that a new one lies between, and how much each counts; together 2 × the new length.
struct TAPS {
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    std::uint64_t first_weight = 0;
    std::uint64_t second_weight = 0;
};

/// In units of half a new texel, the centre of new texel x lies at (2x + 1) · old length − new length beyond the centre
/// of the first old one, whose next one follows 2 × the new length on.
std::vector<TAPS> taps_of(std::uint32_t old_length, std::uint32_t new_length) {
    std::int64_t const step = std::int64_t{2} * new_length;
    std::int64_t const last = std::int64_t{old_length} - 1;
    std::vector<TAPS> taps(new_length);
    for (std::uint32_t x = 0; x < new_length; ++x) {
        std::int64_t const at =
            std::clamp<std::int64_t>((std::int64_t{2} * x + 1) * old_length - new_length, 0, last * step);
        taps[x].first = static_cast<std::uint32_t>(at / step);
        taps[x].second = static_cast<std::uint32_t>(std::min(at / step + 1, last));
        taps[x].second_weight = static_cast<std::uint64_t>(at % step);
        taps[x].first_weight = static_cast<std::uint64_t>(step) - taps[x].second_weight;
    }
    return taps;
}

}  // namespace

PIXEL_BUFFER enlarge(PIXEL_BUFFER const& source, std::uint32_t width, std::uint32_t height) {
    PIXEL_BUFFER target(source.format(), width, height, 1);
    std::vector<TAPS> const columns = taps_of(source.width(), width);
    std::vector<TAPS> const rows = taps_of(source.height(), height);
    std::uint64_t const total = checked_size::saturating_product(4u, width, height);
    std::uint8_t const* const texels = source.slice(0, 0).data();
    std::size_t const pitch = source.row_pitch(0);
    std::uint8_t* out = target.slice(0, 0).data();
    for (TAPS const& row : rows) {
        std::uint8_t const* const upper = texels + row.first * pitch;
        std::uint8_t const* const lower = texels + row.second * pitch;
        for (TAPS const& column : columns) {
            std::size_t const left = std::size_t{4} * column.first;
            std::size_t const right = std::size_t{4} * column.second;
            for (std::size_t channel = 0; channel < 4; ++channel) {
                std::uint64_t const above =
                    column.first_weight * upper[left + channel] + column.second_weight * upper[right + channel];
                std::uint64_t const below =
                    column.first_weight * lower[left + channel] + column.second_weight * lower[right + channel];
                *out++ = static_cast<std::uint8_t>((row.first_weight * above + row.second_weight * below + total / 2) /
                                                   total);
            }
        }
    }
    return target;
}
