// What people look at: one picture out of any readable file in one plain layout, what a file holds in words and
// numbers, and a PNG of a picture. The viewing, comparing and describing commands stand on this.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace IMAGE_LOADER {

/// Eight bits a channel in the byte order red, green, blue, alpha; rows top-down without padding. Colours are as the
/// file holds them: they are neither multiplied nor divided by alpha.
struct PICTURE {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> rgba;
};

/// What a file holds.
struct FILE_DESCRIPTION {
    std::string kind;  ///< "TGA", "PNG", "JPG", "TIF" or "DDS"
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t depth = 1;
    std::uint32_t mips = 1;
    std::uint32_t faces = 1;   ///< 6 for a cube map
    std::uint32_t layers = 1;  ///< array elements
    bool is_cube = false;
    bool is_volume = false;
    bool is_srgb = false;
    /// "BC1_UNORM" of an extended header, "DXT1" of a legacy one, "R8G8B8" and the like of a legacy uncompressed one;
    /// for other kinds how the file codes its texels, e.g. "32-bit run-length".
    std::string format;
    std::string header_kind;  ///< "legacy" or "DX10" for DDS; empty for others
    /// Bytes behind the header that the header announces, and that are there. Both 0 where the file is compressed as a
    /// whole (PNG, JPG, TIF, run-length TGA).
    std::uint64_t payload_expected = 0;
    std::uint64_t payload_actual = 0;
    bool has_alpha = false;  ///< the format can hold alpha; not that some texel is translucent
};

/// One picture of a readable file. `layer_or_slice` counts slices of a volume and otherwise faces and array elements
/// together (element × faces + face). Nothing on failure, and `cause` says why.
std::optional<PICTURE> load_picture(std::filesystem::path const& path, std::uint32_t level,
                                    std::uint32_t layer_or_slice, std::string& cause);

/// Reads no more than headers where the format allows it; a DDS whose payload is short is described all the same.
std::optional<FILE_DESCRIPTION> describe(std::filesystem::path const& path, std::string& cause);

/// Writes a PNG, of 32 bits a texel when some texel is translucent and of 24 otherwise. The file is whole or as it was
/// before: it is written beside its place and then moved. False on failure, and `cause` says why.
bool write_png(std::filesystem::path const& path, PICTURE const& picture, std::string& cause);

}  // namespace IMAGE_LOADER
