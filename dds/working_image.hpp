// Images of four 8-bit channels that the steps of a conversion make for themselves.
#pragma once

#include "platform/image_loader/image.hpp"

#include <cstdint>

/// An image with memory of its own, all bytes 0. Throws std::bad_alloc where the loader's image would only be not
/// valid: the steps that write into it have nothing else to say about it.
IMAGE_LOADER::IMAGE make_working_image(std::uint32_t width, std::uint32_t height, std::uint32_t levels,
                                       IMAGE_LOADER::TEXTURE_TEXEL_FORMAT texel_format,
                                       IMAGE_LOADER::IMAGE_FORMAT image_format = IMAGE_LOADER::IMAGE_FORMAT::memory);
