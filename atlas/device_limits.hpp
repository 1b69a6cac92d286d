// How large textures may get. Pages are plain memory here and no device is asked; these are the bounds of today's
// graphics hardware (Direct3D 11, feature level 11), so that what is packed can be used.
#pragma once

#include <cstdint>

inline constexpr std::int32_t max_texture_extent = 16384;
/// Of each of a volume's three sides.
inline constexpr std::int32_t max_volume_extent = 2048;
