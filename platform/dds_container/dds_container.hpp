// DDS files: what the header says, where each surface lies, and the same in the other direction. The layout follows
// Microsoft's "DDS file layout for textures" and "for cubic environment maps, volumes"; where files in the wild differ
// from it (a mip count of 0, a depth of 0, few flags set), the fields are believed and the flags are not.
#pragma once

#include "platform/checked_size.hpp"
#include "platform/dds_container/dxgi_format.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace dds_container {

/// Bounds on what a header may announce; checked before memory is taken for anything.
inline constexpr std::uint32_t largest_side = checked_size::largest_side;
inline constexpr std::uint64_t most_texels_per_surface = checked_size::most_texels;

inline constexpr std::size_t legacy_header_size = 128;
inline constexpr std::size_t dx10_header_size = 148;

enum class HEADER_KIND : std::uint8_t { legacy, dx10 };

/// The texel layout of a legacy header that has no four-character code.
struct PIXEL_MASKS {
    std::uint32_t bits_per_texel = 0;  ///< 8, 16, 24 or 32
    std::uint32_t red = 0;             ///< luminance too
    std::uint32_t green = 0;
    std::uint32_t blue = 0;
    std::uint32_t alpha = 0;
    bool is_luminance = false;

    friend bool operator==(PIXEL_MASKS const&, PIXEL_MASKS const&) = default;
};

/// What a header says. When writing: `raw_mip_count`, `is_srgb`, `four_cc` of formats that have a number, and
/// `bytes_per_*` need not be filled.
struct DDS_DESCRIPTION {
    HEADER_KIND header_kind = HEADER_KIND::legacy;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t depth = 1;          ///< 1 unless `is_volume`
    std::uint32_t mip_count = 1;      ///< levels of each surface, at least 1
    std::uint32_t raw_mip_count = 0;  ///< the header's field as it stands
    std::uint32_t array_size = 1;     ///< elements; a cube map of six faces counts as one
    std::uint32_t face_count = 1;     ///< 6 for a cube map; legacy cube maps may lack faces
    bool is_cube = false;
    bool is_volume = false;
    /// The format's number, also for legacy headers that mean exactly that format; `unknown` when only `masks` tell.
    DXGI format = DXGI::unknown;
    /// The four-character code of a legacy header, "DXT1"; a numeric one as digits, "113"; empty without one.
    std::string four_cc;
    /// The masks of a legacy uncompressed header, also where `format` names the same layout.
    PIXEL_MASKS masks;
    bool is_srgb = false;
    /// Colours are multiplied by alpha: DXT2, DXT4, and extended headers that say so.
    bool is_premultiplied = false;
    bool has_alpha = false;
    std::uint32_t bytes_per_texel = 0;  ///< 0 for block formats
    std::uint32_t bytes_per_block = 0;  ///< 0 for others

    std::size_t header_size() const { return header_kind == HEADER_KIND::dx10 ? dx10_header_size : legacy_header_size; }
};

/// One two-dimensional picture of a file.
struct DDS_SURFACE {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint64_t offset = 0;  ///< from the start of the file
    std::uint64_t size = 0;
    std::uint64_t row_pitch = 0;  ///< bytes from one row of texels or blocks to the next
};

/// A side of a mip level: halved and rounded down, never below 1.
constexpr std::uint32_t level_side(std::uint32_t side, std::uint32_t level) {
    std::uint32_t const halved = level < 32 ? side >> level : 0;
    return halved > 0 ? halved : 1;
}

/// Levels from a largest side down to 1.
constexpr std::uint32_t full_chain_length(std::uint32_t side) {
    std::uint32_t levels = 1;
    while (side > 1) {
        side >>= 1;
        ++levels;
    }
    return levels;
}

/// Reads a header of 128 or 148 bytes; `bytes` may go on behind it. Checks the sizes against the bounds above and the
/// mip count against the sides, not the length of the payload. Nothing on failure, and `cause` says why.
std::optional<DDS_DESCRIPTION> read_dds_header(std::span<std::uint8_t const> bytes, std::string& cause);

/// The same, and the payload that the header announces must be there in full (more bytes may follow).
std::optional<DDS_DESCRIPTION> read_dds(std::span<std::uint8_t const> file, std::string& cause);

/// Bytes behind the header that the description asks for: at most 2^64 − 1, which is also what stands for more.
std::uint64_t payload_size(DDS_DESCRIPTION const& description);

/// Where one picture lies. Element < array_size, face < face_count, level < mip_count, slice < the level's depth;
/// nothing for others. Files go element by element, face by face, level by level, slice by slice.
std::optional<DDS_SURFACE> find_surface(DDS_DESCRIPTION const& description, std::uint32_t element, std::uint32_t face,
                                        std::uint32_t level, std::uint32_t slice);

/// A file of the given kind of header. `surfaces` are the bytes of the levels in the order of the file, all slices of a
/// volume's level in one; their number and sizes must be what the description asks for. A legacy header takes formats
/// that have a four-character code or masks; the extended one takes formats that have a number. Nothing on failure, and
/// `cause` says why.
std::optional<std::vector<std::uint8_t>> write_dds(DDS_DESCRIPTION const& description,
                                                   std::span<std::span<std::uint8_t const> const> surfaces,
                                                   std::string& cause);

}  // namespace dds_container
