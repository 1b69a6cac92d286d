// The steps that rewrite the channels of a working image, every texel of every mip level in place: premultiplied alpha
// and the shuffle of parallax maps. Working images have four 8-bit channels with alpha last; the other three are called
// blue, green and red by the order of most of them, although those of PNG sources lie the other way round.
#pragma once

#include "platform/image_loader/image.hpp"

/// Multiplies the colours by alpha: c·a as they are, or (c^2.2 · a)^(1/2.2) with gamma correction, rounded half away
/// from zero. Alpha stays.
void premultiply_alpha(IMAGE_LOADER::IMAGE& image, bool need_gamma_correction);

/// Blue takes the old alpha, alpha the old red, red becomes 255, green stays.
void shuffle_parallax_channels(IMAGE_LOADER::IMAGE& image);
