#include "host/tool/picture_difference.hpp"

#include <cmath>
#include <limits>

namespace tool {

PICTURE_DIFFERENCE measure_difference(IMAGE_LOADER::PICTURE const& left, IMAGE_LOADER::PICTURE const& right) {
    // Sums of whole numbers: exact, whatever the order.
    std::array<std::uint64_t, 4> sums = {};
    for (std::size_t i = 0; i < left.rgba.size(); ++i) {
        int const difference = int{left.rgba[i]} - int{right.rgba[i]};
        sums[i % 4] += static_cast<std::uint64_t>(difference * difference);
    }
    PICTURE_DIFFERENCE result;
    double const texels = static_cast<double>(left.width) * left.height;
    for (std::size_t channel = 0; channel < 4; ++channel)
        result.channels[channel] = static_cast<double>(sums[channel]) / texels;
    std::uint64_t const rgb = sums[0] + sums[1] + sums[2];
    result.rgb = static_cast<double>(rgb) / (3 * texels);
    result.rgba = static_cast<double>(rgb + sums[3]) / (4 * texels);
    return result;
}

double psnr(double mean_squared_error) {
    return mean_squared_error > 0 ? 10 * std::log10(255.0 * 255.0 / mean_squared_error)
                                  : std::numeric_limits<double>::infinity();
}

}  // namespace tool
