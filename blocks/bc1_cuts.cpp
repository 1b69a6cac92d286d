#include "blocks/bc1_cuts.hpp"

#include <array>
#include <cstddef>

namespace blocks {
namespace {

constexpr BC1_CUT make_cut(int steps, std::uint8_t first, std::uint8_t second, std::uint8_t third) {
    int const run[4] = {first, second - first, steps == 3 ? third - second : 16 - second, 16 - third};
    double first_squared = 0;
    double cross = 0;
    double second_squared = 0;
    for (int i = 0; i <= steps; ++i) {
        double const weight = static_cast<double>(steps - i) / steps;
        first_squared += run[i] * weight * weight;
        cross += run[i] * weight * (1 - weight);
        second_squared += run[i] * (1 - weight) * (1 - weight);
    }
    double const determinant = first_squared * second_squared - cross * cross;
    return {{first, second, third},
            static_cast<float>((second_squared + cross) / determinant / steps),
            static_cast<float>(-(first_squared + cross) / determinant / steps),
            static_cast<float>(first_squared),
            static_cast<float>(2 * cross),
            static_cast<float>(second_squared),
            static_cast<float>(2.0 / steps),
            static_cast<float>(-16 / determinant / (steps * steps))};
}

constexpr auto four = [] {
    std::array<BC1_CUT, 965> cuts{};
    std::size_t n = 0;
    for (int i = 0; i <= 16; ++i)
        for (int j = i; j <= 16; ++j)
            for (int k = j; k <= 16; ++k) {
                if (i == 16 || k == 0 || (i == 0 && j == 16) || (j == 0 && k == 16))
                    continue;
                cuts[n++] = make_cut(3, i, j, k);
            }
    return cuts;
}();
constexpr auto three = [] {
    std::array<BC1_CUT, 150> cuts{};
    std::size_t n = 0;
    for (int i = 0; i <= 16; ++i)
        for (int j = i; j <= 16; ++j) {
            if (i == 16 || j == 0 || (i == 0 && j == 16))
                continue;
            cuts[n++] = make_cut(2, i, j, 16);
        }
    return cuts;
}();

}  // namespace

std::span<BC1_CUT const> bc1_four_colour_cuts() {
    return four;
}
std::span<BC1_CUT const> bc1_three_colour_cuts() {
    return three;
}

}  // namespace blocks
