// Sizes of whole images in bytes, computed so that no width and height make them wrap around.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

#include "blocks/block_types.hpp"

namespace blocks {

/// The product, or nothing if a size_t cannot hold it.
constexpr std::optional<std::size_t> checked_product(std::size_t a, std::size_t b) {
    if (b != 0 && a > std::numeric_limits<std::size_t>::max() / b) {
        return std::nullopt;
    }
    return a * b;
}

/// Bytes of all blocks of an image, or nothing if a size_t cannot hold the number.
constexpr std::optional<std::size_t> block_bytes_of_image(FORMAT format, std::uint32_t width, std::uint32_t height) {
    auto const blocks = checked_product(blocks_across(width), blocks_across(height));
    return blocks ? checked_product(*blocks, bytes_per_block(format)) : std::nullopt;
}

/// Channel values of a tightly packed RGBA image, or nothing if a size_t cannot hold the number.
constexpr std::optional<std::size_t> rgba_values_of_image(std::uint32_t width, std::uint32_t height) {
    auto const texels = checked_product(width, height);
    return texels ? checked_product(*texels, 4) : std::nullopt;
}

}  // namespace blocks
