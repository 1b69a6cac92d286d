// Sizes that come out of numbers which a stranger wrote. Every product and sum of them is made here, so that none can
// wrap round to something small: where a size is only compared it saturates, and where memory is taken for it, it is
// refused like memory that is not there. The bounds that hold for all images stand here too.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>

namespace checked_size {

/// The largest side of an image, a volume's depth included: four times what graphics hardware takes.
inline constexpr std::uint32_t largest_side = 65536;
/// The most texels of one level of an image or a volume (16,384 × 16,384).
inline constexpr std::uint64_t most_texels = std::uint64_t{1} << 28;
/// The largest image file that is read into memory as a whole.
inline constexpr std::uint64_t most_file_bytes = std::uint64_t{8} << 30;

/// Stands for every number that 64 bits do not hold.
inline constexpr std::uint64_t more_than_any = std::numeric_limits<std::uint64_t>::max();

constexpr std::uint64_t saturating_sum(std::uint64_t a, std::uint64_t b) {
    return a > more_than_any - b ? more_than_any : a + b;
}

/// 1 without factors.
template <std::unsigned_integral... FACTORS>
constexpr std::uint64_t saturating_product(FACTORS... factors) {
    std::uint64_t product = 1;
    bool is_zero = false;
    auto const multiply = [&](std::uint64_t factor) {
        is_zero = is_zero || factor == 0;
        product = factor != 0 && product > more_than_any / factor ? more_than_any : product * factor;
    };
    (multiply(factors), ...);
    return is_zero ? 0 : product;
}

/// The number of bytes or elements to take memory for. Throws std::bad_alloc for more than an object may have.
template <std::unsigned_integral... FACTORS>
constexpr std::size_t memory_size(FACTORS... factors) {
    std::uint64_t const size = saturating_product(factors...);
    if (size > static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max())) {
        throw std::bad_alloc();
    }
    return static_cast<std::size_t>(size);
}

/// Whether an image of these sides may be worked on at all. An empty one may.
constexpr bool is_within_bounds(std::uint64_t width, std::uint64_t height, std::uint64_t depth = 1) {
    return width <= largest_side && height <= largest_side && depth <= largest_side &&
           saturating_product(width, height, depth) <= most_texels;
}

}  // namespace checked_size
