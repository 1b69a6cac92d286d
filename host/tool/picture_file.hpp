// Between the command line and the image loader: paths, and the words for what cannot be had.
#pragma once

#include "host/framework/native_path.hpp"
#include "platform/image_loader/picture.hpp"

namespace tool {

using framework::native_path;

}  // namespace tool
