// Pages as files: Targa for those that are compressed afterwards, DDS for volumes and cubes, which are used as they
// are.
#pragma once

#include "atlas/pixel_buffer.hpp"

#include <cstdint>
#include <filesystem>

enum class DDS_SHAPE : std::uint8_t { volume, cube };

/// The top level as 32-bit true colour, top row first, uncompressed. False when the texels' format cannot be converted
/// or the file cannot be written; there is no half-written one.
bool save_targa(std::filesystem::path const& path, PIXEL_BUFFER const& texels);

/// The top level with all slices or faces, in the texels' own format.
bool save_dds(std::filesystem::path const& path, PIXEL_BUFFER const& texels, DDS_SHAPE shape);
