// PNG, JPG and TIF through FreeImage, brought to eight bits in four channels whatever they hold.
#pragma once

#include "platform/image_loader/image_format.hpp"
#include "platform/image_loader/image_memory.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace IMAGE_LOADER {

/// Byte order of the texels that `load_with_freeimage` gives.
enum class CHANNEL_ORDER : std::uint8_t { red_first, blue_first };

/// Texels of a decoded file: four bytes each, rows top-down without padding.
struct DECODED_FILE {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    IMAGE_BYTES texels;
};

/// What the header of such a file says.
struct CODED_FILE_INFO {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::string texels;  ///< for people: "8-bit grey", "48-bit RGB"
    bool has_alpha = false;
};

/// Decodes the file. Sixteen bits are rounded to eight, floats are clamped to 0…1, palettes and grey are widened, CMYK
/// becomes RGB, transparent palette entries and colour keys become alpha, and alpha is 255 where there is none. Stored
/// gamma is not applied. The header's sides are held against the bounds first. Nothing on failure; `cause` says why.
std::optional<DECODED_FILE> load_with_freeimage(std::span<std::uint8_t const> file, IMAGE_FORMAT format,
                                                CHANNEL_ORDER order, std::string& cause);

/// Reads the header alone.
std::optional<CODED_FILE_INFO> read_info_with_freeimage(std::span<std::uint8_t const> file, IMAGE_FORMAT format,
                                                        std::string& cause);

/// The bytes of a PNG from rows of red, green, blue, alpha. Nothing on failure.
std::optional<std::vector<std::uint8_t>> encode_png(std::span<std::uint8_t const> rgba, std::uint32_t width,
                                                    std::uint32_t height, std::string& cause);

}  // namespace IMAGE_LOADER
