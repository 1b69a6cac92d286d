#include "platform/image_loader/wrap_image32.hpp"

#include <utility>

namespace IMAGE_LOADER {

IMAGE wrap_image32(QE::IMAGE32& image) {
    IMAGE_INFO info;
    info.width = image.width;
    info.height = image.height;
    info.texel_format = TTF_B8G8R8A8;
    info.image_format = IMAGE_FORMAT::tga;
    info.number_of_mips = 1;
    info.surfaces = {{image.pixels.data(), std::uint64_t{4} * image.width, image.pixels.size(), 0}};
    return IMAGE(std::move(info));
}

}  // namespace IMAGE_LOADER
