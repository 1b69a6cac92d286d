// Compares the half conversion of every one of the 2^32 floats with the rule. Minutes of work: built and run by hand.
//
//     cmake --build --preset release --target half_of_every_float && build/release/bin/half_of_every_float
#include "fga/float_to_half.hpp"
#include "tests/fga/half_rule.hpp"

#include <cstdio>

int main() {
    std::uint32_t bits = 0;
    std::uint64_t wrong = 0;
    do {
        float const value = std::bit_cast<float>(bits & 0x7FFFFFFF);
        auto const expected = static_cast<std::uint16_t>(half_by_rule(value) | (bits >> 16 & 0x8000));
        std::uint16_t const got = float_to_half(std::bit_cast<float>(bits));
        if (got != expected && ++wrong <= 20)
            std::printf("%08x: %04x instead of %04x\n", bits, got, expected);
    } while (++bits != 0);
    std::printf("%llu wrong\n", static_cast<unsigned long long>(wrong));
    return wrong == 0 ? 0 : 1;
}
