// The tool-data builder library's second compressor: images of the engine's 32-bit type in, one DDS file with a full
// mip chain and a legacy header out.
#pragma once

#include "platform/qe/image32.hpp"
#include "platform/qe/string.hpp"
#include "platform/qe/uni_string.hpp"

#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace TOOLDATABUILDER {

/// The compressor's numbers for what it writes.
enum class AMD_TC_FORMAT : std::uint32_t {
    argb_8888 = 2,
    /// DXT5 for normal maps: the file's alpha holds the image's red and its green the green; red is 255, blue 0.
    dxt5_xgxr = 19,
    dxt1 = 30,
    dxt3 = 31,
    dxt5 = 32,
};

/// A block of a fixed size, so that callers and library can be of different ages: fields that a caller does not know
/// are 0 and mean what was done before there was the field.
struct AMD_TC_CompressOptions {
    std::uint32_t size = 0;                 ///< of the block; the library refuses another than its own
    std::uint32_t one_bit_alpha = 0;        ///< DXT1 alone: texels below the threshold become transparent
    std::uint32_t alpha_threshold = 0;      ///< 0 to 255
    std::uint32_t fast = 0;                 ///< for work in progress: several times as fast, a little worse
    std::uint32_t linear_light_levels = 0;  ///< colours of mip levels are averaged as light (sRGB), not as numbers
    std::array<std::uint32_t, 495> reserved = {};
};
static_assert(sizeof(AMD_TC_CompressOptions) == 2000);

/// Writes `levels`, the top level first and each half of the one before, encoded as `format`. `pixel_format_flags` and
/// `four_cc` are the words of the DDS header and must be those of the format: 4 and its four characters, or for
/// argb_8888 no four characters and 64, or 65 for a file whose fourth byte is alpha. With `complete_chain` the levels
/// that are missing down to 1 × 1 are made from the last one by a box filter. The file is written whole or not at all.
/// False on failure, and `cause` says why. Throws std::bad_alloc.
bool write_dds_AMD_compressor(QE::String const& path, std::span<QE::IMAGE32 const> levels, AMD_TC_FORMAT format,
                              std::uint32_t pixel_format_flags, std::uint32_t four_cc,
                              AMD_TC_CompressOptions const& options, bool complete_chain, std::string& cause);

/// The same from one image, with the whole chain below it.
bool write_dds_AMD_compressor(QE::UniString const& path, QE::IMAGE32 const& image, AMD_TC_FORMAT format,
                              std::uint32_t pixel_format_flags, std::uint32_t four_cc,
                              AMD_TC_CompressOptions const& options, std::string& cause);

}  // namespace TOOLDATABUILDER
