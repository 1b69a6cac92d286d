// How much an error in each channel counts.
#pragma once

#include <cmath>
#include <cstddef>

namespace blocks {

/// Weights of squared errors, with square roots ready.
struct CHANNEL_WEIGHTS {
    float weight[4];
    float root[4];
};

/// Equal weights, or weights by the shares of the primaries in luminance (ITU-R BT.709) relative to green's.
inline CHANNEL_WEIGHTS channel_weights(bool perceptual) {
    CHANNEL_WEIGHTS weights{{1, 1, 1, 1}, {1, 1, 1, 1}};
    if (perceptual) {
        float const share[3] = {0.2126f / 0.7152f, 1.0f, 0.0722f / 0.7152f};
        for (std::size_t channel = 0; channel < 3; ++channel) {
            weights.weight[channel] = share[channel];
            weights.root[channel] = std::sqrt(share[channel]);
        }
    }
    return weights;
}

}  // namespace blocks
