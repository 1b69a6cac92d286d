// The mip levels of a cut-out texture (leaves, fences) whose alpha is on or off. Plain averaging makes such textures
// thin out with distance; here every level keeps the share of opaque texels that the top level has, after Castaño,
// "Computing Alpha Mipmaps" (2010), with a fixed choice of texels in place of a scaled threshold.
#pragma once

#include "platform/image_loader/image.hpp"

#include <vector>

/// One single-level image for each level below the top, down to 1 × 1, with the top's texel format. `top` has four
/// 8-bit channels, alpha last. A texel of a level averages the colours of the block of top-level texels that it covers
/// (in linear light with gamma correction), and is ranked by the share of opaque ones (alpha at least 128) among them.
/// The first texels of that ranking, as many as keep the top's share, get alpha 255, all others 0. Throws
/// std::bad_alloc.
std::vector<IMAGE_LOADER::IMAGE> make_one_bit_alpha_chain(IMAGE_LOADER::IMAGE const& top, bool need_gamma_correction);
