// Half of an image on each side, by averaging 2 × 2 texels: as they are, or in linear light.
#pragma once

#include "dds/gamma_curve.hpp"
#include "platform/image_loader/image.hpp"

/// A single-level image of half the width and height (rounded down, both at least 1) and of the source's texel and
/// image format. `source` has four 8-bit channels, alpha last. Without a curve each channel is (a + b + c + d + 2) / 4
/// in whole numbers. With one, colours are averaged in linear light and alpha as it is, in single precision; a column
/// or row that the source does not have repeats its last one. Throws std::bad_alloc.
IMAGE_LOADER::IMAGE halve_image(IMAGE_LOADER::IMAGE const& source, GAMMA_CURVE const* curve);
