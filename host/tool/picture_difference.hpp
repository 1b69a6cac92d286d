// How far two pictures of one size are apart, in the measures that texture people use.
#pragma once

#include "platform/image_loader/picture.hpp"

#include <array>

namespace tool {

struct PICTURE_DIFFERENCE {
    /// Mean squared error of red, green, blue, alpha, in units of one step of 255.
    std::array<double, 4> channels = {};
    /// Over the three colours, and over all four channels.
    double rgb = 0;
    double rgba = 0;
};

/// Both pictures have the same size, and at least one texel.
PICTURE_DIFFERENCE measure_difference(IMAGE_LOADER::PICTURE const& left, IMAGE_LOADER::PICTURE const& right);

/// Peak signal to noise ratio in decibels of a mean squared error; infinite for 0.
double psnr(double mean_squared_error);

}  // namespace tool
