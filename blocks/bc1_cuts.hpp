// The ways to cut sixteen sorted texels into runs of equal palette entries, with the constants that cluster fit needs
// of each.
#pragma once

#include <cstdint>
#include <span>

namespace blocks {

/// Texels before `at[0]` take the first endpoint, those up to `at[1]` the next entry of the palette, and so on. `sum`
/// is the sum of the prefix sums (relative to the mean) at the cuts; with the weights w of the first endpoint it is Σ w
/// · texel times the number of steps.
struct BC1_CUT {
    std::uint8_t at[3];
    /// Unrounded endpoints: `sum` times these.
    float first_scale;
    float second_scale;
    /// The error as a quadratic in the endpoints: Σ w², 2 Σ w (1 - w), Σ (1 - w)², and 2 / steps for the linear part.
    float first_squared;
    float twice_cross;
    float second_squared;
    float twice_sum_scale;
    /// Error of unrounded endpoints, less the spread: |sum|² times this.
    float unrounded_error_scale;
};

/// The cuts for a palette of `colours` (4 or 3; for 3, `at[2]` is 16), likeliest first: those that are seldom far from
/// the best, or all there are.
std::span<BC1_CUT const> bc1_cuts(int colours, bool all);

}  // namespace blocks
