// The engine's plain 32-bit image, seen as an image of the loader.
#pragma once

#include "platform/image_loader/image.hpp"
#include "platform/qe/image32.hpp"

namespace IMAGE_LOADER {

/// A view of one level, TTF_B8G8R8A8; the texels stay where they are and must outlive it.
IMAGE wrap_image32(QE::IMAGE32& image);

}  // namespace IMAGE_LOADER
