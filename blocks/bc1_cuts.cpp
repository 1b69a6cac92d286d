// Which cuts are likely was measured on textures of games: the list grew greedily, each time by the cut (and its mirror
// image, because an axis may point either way) that lowered the error over all blocks most.
#include "blocks/bc1_cuts.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace blocks {
namespace {

/// Cuts with their mirror images left out.
constexpr std::uint8_t likely_of_four[][3] = {
    {0, 8, 16},  {0, 0, 12}, {4, 8, 12},  {0, 5, 16},  {0, 0, 4},   {0, 8, 12},  {0, 4, 12},  {0, 0, 8},   {2, 6, 11},
    {0, 0, 15},  {2, 4, 9},  {0, 6, 16},  {3, 8, 13},  {0, 1, 2},   {0, 3, 16},  {0, 0, 9},   {0, 7, 14},  {1, 5, 12},
    {1, 3, 7},   {0, 4, 16}, {0, 4, 10},  {3, 7, 11},  {2, 6, 14},  {4, 4, 8},   {0, 13, 15}, {0, 4, 4},   {0, 4, 8},
    {0, 4, 15},  {0, 0, 14}, {0, 10, 15}, {0, 7, 16},  {2, 7, 13},  {0, 0, 11},  {5, 8, 11},  {0, 0, 6},   {1, 4, 10},
    {0, 6, 13},  {3, 6, 10}, {0, 3, 13},  {2, 8, 12},  {0, 15, 15}, {2, 5, 8},   {0, 0, 10},  {0, 2, 8},   {0, 1, 14},
    {0, 10, 13}, {0, 0, 13}, {2, 4, 11},  {0, 6, 11},  {0, 12, 15}, {4, 8, 11},  {0, 2, 11},  {0, 12, 12}, {3, 6, 12},
    {0, 7, 15},  {1, 4, 8},  {0, 3, 14},  {4, 6, 8},   {1, 5, 15},  {0, 1, 16},  {1, 3, 12},  {1, 7, 12},  {2, 4, 7},
    {0, 0, 7},   {2, 7, 10}, {0, 2, 4},   {1, 5, 10},  {2, 8, 14},  {0, 14, 15}, {0, 13, 14}, {0, 4, 14},  {8, 8, 8},
    {0, 1, 13},  {0, 9, 14}, {0, 0, 2},   {3, 5, 9},   {1, 6, 14},  {3, 9, 11},  {0, 0, 5},   {1, 2, 9},   {5, 8, 9},
    {0, 1, 15},  {1, 3, 6},  {3, 8, 12},  {0, 11, 14}, {2, 5, 12},  {2, 6, 8},   {0, 2, 14},  {0, 0, 3},   {0, 6, 14},
    {1, 8, 15},  {0, 5, 15}, {0, 10, 12}, {0, 1, 10},  {0, 5, 12},  {0, 6, 10},  {2, 9, 13},  {4, 7, 12},  {2, 6, 10},
    {4, 4, 7}};
constexpr std::uint8_t likely_of_three[][2] = {
    {5, 11}, {0, 12}, {0, 8}, {3, 8}, {0, 4}, {0, 15}, {4, 12}, {2, 7}, {0, 10}, {4, 8}, {3, 10}, {0, 14}, {0, 11},
    {0, 13}, {6, 10}, {0, 9}, {2, 9}, {1, 6}, {4, 10}, {3, 6},  {0, 6}, {2, 12}, {2, 5}, {5, 9},  {1, 8},  {0, 2}};

constexpr BC1_CUT make_cut(int steps, int first, int second, int third) {
    int const runs[4] = {first, second - first, third - second, 16 - third};
    double first_squared = 0;
    double cross = 0;
    double second_squared = 0;
    for (int i = 0; i <= steps; ++i) {
        double const weight = static_cast<double>(steps - i) / steps;
        first_squared += runs[i] * weight * weight;
        cross += runs[i] * weight * (1 - weight);
        second_squared += runs[i] * (1 - weight) * (1 - weight);
    }
    double const determinant = first_squared * second_squared - cross * cross;
    return {{static_cast<std::uint8_t>(first), static_cast<std::uint8_t>(second), static_cast<std::uint8_t>(third)},
            static_cast<float>((second_squared + cross) / determinant / steps),
            static_cast<float>(-(first_squared + cross) / determinant / steps),
            static_cast<float>(first_squared),
            static_cast<float>(2 * cross),
            static_cast<float>(second_squared),
            static_cast<float>(2.0 / steps),
            static_cast<float>(-16 / determinant / (steps * steps))};
}

/// Grows a list by cuts that are not in it yet. One that puts all texels into one run fits no line and is left out.
template <std::size_t size>
struct CUT_LIST {
    std::array<BC1_CUT, size> cuts{};
    std::size_t count = 0;

    constexpr void add(int steps, int first, int second, int third) {
        int const longest_run = std::max({first, second - first, third - second, 16 - third});
        bool known = longest_run == 16;
        for (std::size_t i = 0; i < count && !known; ++i) {
            known = cuts[i].at[0] == first && cuts[i].at[1] == second && cuts[i].at[2] == third;
        }
        if (!known) {
            cuts[count++] = make_cut(steps, first, second, third);
        }
    }
};

constexpr std::size_t all_of_four = 965;
constexpr std::size_t all_of_three = 150;

struct FOUR_COLOUR_LIST : CUT_LIST<all_of_four> {
    std::size_t likely = 0;

    constexpr FOUR_COLOUR_LIST() {
        for (auto const& at : likely_of_four) {
            add(3, at[0], at[1], at[2]);
            add(3, 16 - at[2], 16 - at[1], 16 - at[0]);
        }
        likely = count;
        for (int first = 0; first <= 16; ++first) {
            for (int second = first; second <= 16; ++second) {
                for (int third = second; third <= 16; ++third) {
                    add(3, first, second, third);
                }
            }
        }
    }
};

struct THREE_COLOUR_LIST : CUT_LIST<all_of_three> {
    std::size_t likely = 0;

    constexpr THREE_COLOUR_LIST() {
        for (auto const& at : likely_of_three) {
            add(2, at[0], at[1], 16);
            add(2, 16 - at[1], 16 - at[0], 16);
        }
        likely = count;
        for (int first = 0; first <= 16; ++first) {
            for (int second = first; second <= 16; ++second) {
                add(2, first, second, 16);
            }
        }
    }
};

// At first use rather than while compiling, whose limit on steps the search for known cuts would pass.
FOUR_COLOUR_LIST const& four_colour_list() {
    static FOUR_COLOUR_LIST const list;
    return list;
}

THREE_COLOUR_LIST const& three_colour_list() {
    static THREE_COLOUR_LIST const list;
    return list;
}

}  // namespace

std::span<BC1_CUT const> bc1_cuts(int colours, bool all) {
    if (colours == 4) {
        FOUR_COLOUR_LIST const& list = four_colour_list();
        return std::span(list.cuts).first(all ? list.count : list.likely);
    }
    THREE_COLOUR_LIST const& list = three_colour_list();
    return std::span(list.cuts).first(all ? list.count : list.likely);
}

}  // namespace blocks
