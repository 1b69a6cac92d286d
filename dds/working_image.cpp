#include "dds/working_image.hpp"

#include <new>

IMAGE_LOADER::IMAGE make_working_image(std::uint32_t width, std::uint32_t height, std::uint32_t levels,
                                       IMAGE_LOADER::TEXTURE_TEXEL_FORMAT texel_format,
                                       IMAGE_LOADER::IMAGE_FORMAT image_format) {
    IMAGE_LOADER::IMAGE image(width, height, levels, texel_format, image_format);
    if (!image.valid())
        throw std::bad_alloc();
    return image;
}
