// The size of the squares that encoders are compared on.
#pragma once

#include <cstddef>

inline constexpr int crop_side = 256;
inline constexpr std::size_t crop_bytes = std::size_t{crop_side} * crop_side * 4;
