// Cluster fit: texels sorted along an axis fall into runs that share a palette entry, and for each way to cut the
// sorted texels into runs the best endpoints follow from least squares (S. Brown, "DXT Compression Techniques", 2006).
// All blocks of a vector try the same cut at the same time, so its sums of weights are plain constants and only the
// texels differ. A cut whose error even with unrounded endpoints is no better than the best so far is passed over,
// which most are when the likely ones come first.
#include "hwy/highway.h"

#include "blocks/bc1_cuts.hpp"
#include "blocks/encode_bc1_blocks-inl.hpp"
#include "blocks/encode_bc1_range_fit-inl.hpp"

#if defined(BLOCKS_ENCODE_BC1_CLUSTER_FIT_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_ENCODE_BC1_CLUSTER_FIT_INL_HPP
#undef BLOCKS_ENCODE_BC1_CLUSTER_FIT_INL_HPP
#else
#define BLOCKS_ENCODE_BC1_CLUSTER_FIT_INL_HPP
#endif

HWY_BEFORE_NAMESPACE();
namespace blocks {
namespace HWY_NAMESPACE {

/// A sorting network for 16 keys with 60 comparisons, the fewest known (after M. W. Green, 1969; see Knuth, "The Art of
/// Computer Programming", volume 3, section 5.3.4).
constexpr std::uint8_t sorting_network[60][2] = {
    {0, 1},  {2, 3},  {4, 5},   {6, 7},   {8, 9},  {10, 11}, {12, 13}, {14, 15}, {0, 2},  {4, 6},   {8, 10},  {12, 14},
    {1, 3},  {5, 7},  {9, 11},  {13, 15}, {0, 4},  {8, 12},  {1, 5},   {9, 13},  {2, 6},  {10, 14}, {3, 7},   {11, 15},
    {0, 8},  {1, 9},  {2, 10},  {3, 11},  {4, 12}, {5, 13},  {6, 14},  {7, 15},  {5, 10}, {6, 9},   {3, 12},  {13, 14},
    {4, 8},  {7, 11}, {1, 2},   {1, 4},   {7, 13}, {2, 8},   {11, 14}, {2, 4},   {5, 6},  {9, 10},  {11, 13}, {3, 8},
    {7, 12}, {6, 8},  {10, 12}, {3, 5},   {7, 9},  {3, 4},   {5, 6},   {7, 8},   {9, 10}, {11, 12}, {6, 7},   {8, 9}};

/// `of[n][c]`: channel c of the first n texels in the order of an axis.
struct PREFIX_SUMS {
    V of[17][3];
};

/// Transparent texels, which are zero, come last.
HWY_NOINLINE void sum_prefixes(COLOUR_BLOCKS const& blocks, V const (&axis)[3], PREFIX_SUMS& sums) {
    V positions[16];
    V texels[16][3];
    for (int i = 0; i < 16; ++i) {
        V const behind = hn::Mul(hn::Sub(set(1), blocks.opaque[i]), set(1e30f));
        positions[i] = hn::Add(along_axis(blocks, blocks.texels[i], axis), behind);
        for (int c = 0; c < 3; ++c) {
            texels[i][c] = blocks.texels[i][c];
        }
    }
    for (auto const& pair : sorting_network) {
        int const low = pair[0];
        int const high = pair[1];
        V const low_position = positions[low];
        V const high_position = positions[high];
        M const in_order = hn::Le(low_position, high_position);
        positions[low] = hn::Min(low_position, high_position);
        positions[high] = hn::Max(low_position, high_position);
        for (int c = 0; c < 3; ++c) {
            V const low_value = texels[low][c];
            V const high_value = texels[high][c];
            texels[low][c] = hn::IfThenElse(in_order, low_value, high_value);
            texels[high][c] = hn::IfThenElse(in_order, high_value, low_value);
        }
    }
    for (int c = 0; c < 3; ++c) {
        sums.of[0][c] = set(0);
        for (int i = 0; i < 16; ++i) {
            sums.of[i + 1][c] = hn::Add(sums.of[i][c], texels[i][c]);
        }
    }
}

/// The constants of a cut that the endpoints and their error follow from; see BC1_CUT.
struct CUT_CONSTANTS {
    V first_scale;
    V second_scale;
    V first_squared;
    V twice_cross;
    V second_squared;
    V twice_sum_scale;
};

HWY_INLINE CUT_CONSTANTS same_for_all(BC1_CUT const& cut) {
    return {set(cut.first_scale), set(cut.second_scale),   set(cut.first_squared),
            set(cut.twice_cross), set(cut.second_squared), set(cut.twice_sum_scale)};
}

/// One channel of a cut: rounds both endpoints to the grid and returns the error less the spread. The exact widening of
/// grid values is left to the evaluation of the winner; here c / top is near enough.
template <int channel>
HWY_INLINE V cut_error(COLOUR_BLOCKS const& blocks, CUT_CONSTANTS const& cut, V sum, V& grid_first, V& grid_second) {
    constexpr float top = channel == 1 ? 63 : 31;
    V const mean = blocks.mean[channel];
    V const grid_mean = hn::Mul(mean, set(top / 255));
    V const grid_sum = hn::Mul(sum, set(top / 255));
    grid_first = clamp(round_to_nearest(hn::Add(hn::Mul(grid_sum, cut.first_scale), grid_mean)), set(0), set(top));
    grid_second = clamp(round_to_nearest(hn::Add(hn::Mul(grid_sum, cut.second_scale), grid_mean)), set(0), set(top));
    V const first = hn::Sub(hn::Mul(grid_first, set(255 / top)), mean);
    V const second = hn::Sub(hn::Mul(grid_second, set(255 / top)), mean);
    V const twice_texels = hn::Mul(sum, cut.twice_sum_scale);
    V const first_part =
        hn::Sub(hn::Add(hn::Mul(first, cut.first_squared), hn::Mul(second, cut.twice_cross)), twice_texels);
    V const second_part = hn::Add(hn::Mul(second, cut.second_squared), twice_texels);
    return hn::Add(hn::Mul(first, first_part), hn::Mul(second, second_part));
}

HWY_INLINE V weighted_square(COLOUR_BLOCKS const& blocks, V const (&colour)[3]) {
    return hn::Add(hn::Add(hn::Mul(square(colour[0]), set(blocks.channel_weight[0])),
                           hn::Mul(square(colour[1]), set(blocks.channel_weight[1]))),
                   hn::Mul(square(colour[2]), set(blocks.channel_weight[2])));
}

/// Rounds the endpoints of a cut and takes them over where they are `promising` and better than what was found.
HWY_INLINE void try_cut(COLOUR_BLOCKS const& blocks, CUT_CONSTANTS const& cut, V const (&sum)[3], M promising,
                        V& found_error, ENDPOINTS& found) {
    ENDPOINTS candidate;
    V const red = cut_error<0>(blocks, cut, sum[0], candidate.first[0], candidate.second[0]);
    V const green = cut_error<1>(blocks, cut, sum[1], candidate.first[1], candidate.second[1]);
    V const blue = cut_error<2>(blocks, cut, sum[2], candidate.first[2], candidate.second[2]);
    V const error =
        hn::Add(hn::Add(hn::Mul(red, set(blocks.channel_weight[0])), hn::Mul(green, set(blocks.channel_weight[1]))),
                hn::Mul(blue, set(blocks.channel_weight[2])));
    M const better = hn::And(promising, hn::Lt(error, found_error));
    found_error = hn::IfThenElse(better, error, found_error);
    for (int c = 0; c < 3; ++c) {
        found.first[c] = hn::IfThenElse(better, candidate.first[c], found.first[c]);
        found.second[c] = hn::IfThenElse(better, candidate.second[c], found.second[c]);
    }
}

/// Tries the cuts on the sorted texels. `found` becomes the endpoints of the best one, or those of `best` where no cut
/// has less error.
template <int steps>
HWY_NOINLINE void cluster_fit(COLOUR_BLOCKS const& blocks, PREFIX_SUMS const& sums, std::span<BC1_CUT const> cuts,
                              COLOUR_FIT const& best, ENDPOINTS& found) {
    found = best.endpoints;
    V found_error = hn::Sub(best.error, blocks.spread);
    for (BC1_CUT const& cut : cuts) {
        V sum[3];
        for (int c = 0; c < 3; ++c) {
            sum[c] = hn::Add(sums.of[cut.at[0]][c], sums.of[cut.at[1]][c]);
            if constexpr (steps == 3) {
                sum[c] = hn::Add(sum[c], sums.of[cut.at[2]][c]);
            }
        }
        V const unrounded = hn::Mul(weighted_square(blocks, sum), set(cut.unrounded_error_scale));
        M const promising = hn::Lt(unrounded, found_error);
        if (!hn::AllFalse(D(), promising)) {
            try_cut(blocks, same_for_all(cut), sum, promising, found_error, found);
        }
    }
}

/// The same for three colours where some texels are transparent. These are sorted last, and all cuts that lie among the
/// opaque ones are tried; as the number of those differs from block to block, so do the constants.
HWY_NOINLINE void cluster_fit_opaque_part(COLOUR_BLOCKS const& blocks, PREFIX_SUMS const& sums, COLOUR_FIT const& best,
                                          ENDPOINTS& found) {
    found = best.endpoints;
    V found_error = hn::Sub(best.error, blocks.spread);
    for (int i = 0; i <= 16; ++i) {
        for (int j = i; j <= 16; ++j) {
            float const first = static_cast<float>(i);
            float const between = static_cast<float>(j - i);
            V const second = hn::Sub(blocks.opaque_count, set(first + between));
            float const first_squared = first + between / 4;
            float const cross = between / 4;
            V const second_squared = hn::Add(second, set(between / 4));
            V const determinant = hn::Sub(hn::Mul(set(first_squared), second_squared), set(cross * cross));
            V const inverse = hn::Div(set(1), hn::Max(determinant, set(0.1f)));
            V sum[3];
            for (int c = 0; c < 3; ++c) {
                sum[c] = hn::Add(sums.of[i][c], sums.of[j][c]);
            }
            V const unrounded =
                hn::Mul(hn::Mul(weighted_square(blocks, sum), set(-0.25f)), hn::Mul(blocks.opaque_count, inverse));
            M const possible = hn::And(hn::Ge(second, set(0)), hn::Gt(determinant, set(0.1f)));
            M const promising = hn::And(possible, hn::Lt(unrounded, found_error));
            if (hn::AllFalse(D(), promising)) {
                continue;
            }
            V const half = hn::Mul(inverse, set(0.5f));
            CUT_CONSTANTS const cut = {hn::Mul(hn::Add(second_squared, set(cross)), half),
                                       hn::Mul(set(-first_squared - cross), half),
                                       set(first_squared),
                                       set(2 * cross),
                                       second_squared,
                                       set(1)};
            try_cut(blocks, cut, sum, promising, found_error, found);
        }
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace blocks
HWY_AFTER_NAMESPACE();

#endif
