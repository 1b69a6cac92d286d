// The engine's 32-bit image: what the TGA reader gives and what the channel-combining actions build.
#pragma once

#include "platform/checked_size.hpp"
#include "platform/image_loader/image_memory.hpp"

#include <cstddef>
#include <cstdint>
#include <span>

namespace QE {

/// Four 8-bit channels a texel in the byte order blue, green, red, alpha; rows top-down and without padding, so that
/// `pixels` holds width × height × 4 bytes. Its memory is counted with that of all images.
struct IMAGE32 {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    IMAGE_LOADER::IMAGE_BYTES pixels;

    IMAGE32() = default;
    /// All bytes 0. Throws std::bad_alloc.
    IMAGE32(std::uint32_t image_width, std::uint32_t image_height)
        : width(image_width),
          height(image_height),
          pixels(checked_size::memory_size(4u, image_width, image_height)) {}

    /// The four bytes of one texel; x and y are inside the image.
    std::span<std::uint8_t, 4> pixel(std::uint32_t x, std::uint32_t y) {
        return std::span<std::uint8_t, 4>(pixels.data() + 4 * (std::size_t{y} * width + x), 4);
    }
    std::span<std::uint8_t const, 4> pixel(std::uint32_t x, std::uint32_t y) const {
        return std::span<std::uint8_t const, 4>(pixels.data() + 4 * (std::size_t{y} * width + x), 4);
    }
};

}  // namespace QE
