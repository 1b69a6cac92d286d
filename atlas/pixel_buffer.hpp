// The texels of a texture of any kind: mip levels, each of a number of slices (those of a volume, or the faces of a
// cube), in memory of its own.
#pragma once

#include "atlas/d3d_format.hpp"
#include "platform/image_loader/image_memory.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

class PIXEL_BUFFER {
public:
    /// All bytes 0. Sides and slices are at least 1; levels below 1 × 1 have one texel too. Throws std::bad_alloc.
    PIXEL_BUFFER(D3D_FORMAT format, std::uint32_t width, std::uint32_t height, std::uint32_t levels,
                 std::uint32_t slices = 1);

    D3D_FORMAT format() const { return format_; }
    std::uint32_t width() const { return width_; }
    std::uint32_t height() const { return height_; }
    std::uint32_t slices() const { return slices_; }
    std::uint32_t levels() const { return static_cast<std::uint32_t>(levels_.size()); }

    /// Bytes from one row of texels, or of blocks, to the next; rows are not padded.
    std::size_t row_pitch(std::uint32_t level) const { return levels_[level].row_pitch; }
    /// The bytes of one slice of one level; both exist.
    std::span<std::uint8_t> slice(std::uint32_t level, std::uint32_t slice);
    std::span<std::uint8_t const> slice(std::uint32_t level, std::uint32_t slice) const;

private:
    struct LEVEL {
        std::size_t offset = 0;
        std::size_t row_pitch = 0;
        std::size_t slice_bytes = 0;
    };

    D3D_FORMAT format_;
    std::uint32_t width_;
    std::uint32_t height_;
    std::uint32_t slices_;
    std::vector<LEVEL> levels_;
    IMAGE_LOADER::IMAGE_BYTES bytes_;
};

/// Where a whole level of one texture goes in another.
struct COPY_TARGET {
    std::uint32_t level = 0;
    std::uint32_t slice = 0;
    std::uint32_t left = 0;
    std::uint32_t top = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

/// Copies level `level` of `source` to an area of `target` of the same format; the area's size counts. Of formats made
/// of blocks only rows that are whole blocks are copied. An area that does not lie inside its level is left as it is.
void copy_level(PIXEL_BUFFER const& source, std::uint32_t level, PIXEL_BUFFER& target, COPY_TARGET const& area);
