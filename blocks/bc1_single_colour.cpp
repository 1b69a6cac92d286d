#include "blocks/bc1_single_colour.hpp"

namespace blocks {
namespace {

constexpr int widen(int grid, int bits) {
    return bits == 5 ? grid << 3 | grid >> 2 : grid << 2 | grid >> 4;
}

constexpr void fill(GRID_PAIR (&pairs)[256], int bits, int steps) {
    int least[256];
    for (int& cost : least) {
        cost = 1 << 30;
    }
    int const values = 1 << bits;
    for (int first = 0; first < values; ++first) {
        for (int second = 0; second < values; ++second) {
            int const a = widen(first, bits);
            int const b = widen(second, bits);
            int const mixture = (steps - 1) * a + b;
            int const apart = a < b ? b - a : a - b;
            // Farther from the mixture than the coarsest gap between grid values, no pair can be the best.
            int const low = mixture / steps - 9 < 0 ? 0 : mixture / steps - 9;
            int const high = mixture / steps + 9 > 255 ? 255 : mixture / steps + 9;
            for (int value = low; value <= high; ++value) {
                int const decoded = (mixture + steps / 2) / steps;
                int const error = decoded < value ? value - decoded : decoded - value;
                int const unrounded = mixture < value * steps ? value * steps - mixture : mixture - value * steps;
                int const cost = (error * 1024 + apart) * 8 + unrounded;
                if (cost < least[value]) {
                    least[value] = cost;
                    pairs[value] = {static_cast<std::uint8_t>(first), static_cast<std::uint8_t>(second)};
                }
            }
        }
    }
}

constexpr SINGLE_COLOUR_TABLE make_table(int steps) {
    SINGLE_COLOUR_TABLE table{};
    fill(table.five_bits, 5, steps);
    fill(table.six_bits, 6, steps);
    return table;
}

}  // namespace

constinit SINGLE_COLOUR_TABLE const single_colour_of_four = make_table(3);
constinit SINGLE_COLOUR_TABLE const single_colour_of_three = make_table(2);

}  // namespace blocks
