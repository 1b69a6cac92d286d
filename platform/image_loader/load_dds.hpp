// What the image loader makes of DDS files: the texel format behind a description, an image, one picture.
#pragma once

#include "platform/dds_container/dds_container.hpp"
#include "platform/image_loader/image_format.hpp"
#include "platform/image_loader/image_memory.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace IMAGE_LOADER {

/// How the file's texels are read: a row of the format table, or a row made of masks that the table has not.
TEXEL_FORMAT_INFO dds_texel_format(dds_container::DDS_DESCRIPTION const& description);

/// Decodes one picture of a file to red, green, blue, alpha. False, and `cause` filled, when there is no such picture.
bool decode_dds_surface(std::span<std::uint8_t const> file, dds_container::DDS_DESCRIPTION const& description,
                        dds_container::DDS_SURFACE const& surface, std::span<std::uint8_t> rgba, std::string& cause);

}  // namespace IMAGE_LOADER
