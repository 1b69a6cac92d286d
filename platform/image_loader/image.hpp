// The engine's image: one two-dimensional picture with its mip levels, loaded from the bytes of a file, wrapped around
// memory of the caller, or with memory of its own. Images that could not be made are not valid and say why; nothing is
// thrown.
#pragma once

#include "platform/image_loader/image_format.hpp"
#include "platform/image_loader/image_memory.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace IMAGE_LOADER {

/// One mip level.
struct IMAGE_SURFACE {
    std::uint8_t* texels = nullptr;  ///< null in an image that was read from a header alone
    std::uint64_t row_pitch = 0;     ///< bytes from one row of texels, or of blocks, to the next
    std::uint64_t bytes = 0;         ///< of the whole level; when wrapping, 0 stands for row_pitch × rows
    std::uint64_t offset = 0;        ///< from the first byte of the top level
};

struct IMAGE_INFO {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    TEXTURE_TEXEL_FORMAT texel_format = TTF_UNKNOWN;
    IMAGE_FORMAT image_format = IMAGE_FORMAT::unknown;
    std::uint32_t number_of_mips = 0;
    std::vector<IMAGE_SURFACE> surfaces;  ///< number_of_mips of them, the top level first
};

class IMAGE {
public:
    /// Not valid.
    IMAGE() = default;
    /// Loads a DDS, PNG, JPG or TIF file from its bytes; which one, the first bytes decide. The bytes are not needed
    /// afterwards. PNG becomes TTF_R8G8B8A8, JPG and TIF become TTF_B8G8R8A8, whatever the file holds; a DDS keeps its
    /// levels and its texels as they are (masks that no texel format has become TTF_B8G8R8A8). Cube maps, volumes and
    /// arrays are not valid. Headers beyond the bounds of `dds_container` are refused before texels are decoded.
    explicit IMAGE(std::span<std::uint8_t const> file);
    IMAGE(void const* file, std::size_t count);
    /// Wraps the texels that the surfaces point at: no copy, no ownership; they must outlive the image.
    explicit IMAGE(IMAGE_INFO info);
    /// Lays levels, tightly and one after the other, on the caller's buffer, which must outlive the image. Not valid
    /// when the buffer is smaller than `chain_bytes`.
    IMAGE(std::span<std::uint8_t> buffer, std::uint32_t width, std::uint32_t height, std::uint32_t levels,
          TEXTURE_TEXEL_FORMAT texel_format, IMAGE_FORMAT image_format = IMAGE_FORMAT::memory);
    /// Owns its texels, all bytes 0.
    IMAGE(std::uint32_t width, std::uint32_t height, std::uint32_t levels, TEXTURE_TEXEL_FORMAT texel_format,
          IMAGE_FORMAT image_format = IMAGE_FORMAT::memory);

    IMAGE(IMAGE&& other) noexcept;
    IMAGE& operator=(IMAGE&& other) noexcept;
    ~IMAGE() = default;

    bool valid() const { return cause_.empty(); }
    /// Why the image is not valid, for people; empty when it is.
    std::string const& cause() const { return cause_; }
    IMAGE_INFO const& get_image_info() const { return info_; }

    std::uint32_t width() const { return info_.width; }
    std::uint32_t height() const { return info_.height; }
    std::uint32_t number_of_mips() const { return info_.number_of_mips; }
    TEXTURE_TEXEL_FORMAT texel_format() const { return info_.texel_format; }
    IMAGE_FORMAT image_format() const { return info_.image_format; }
    std::uint32_t level_width(std::uint32_t level) const { return dds_container::level_side(info_.width, level); }
    std::uint32_t level_height(std::uint32_t level) const { return dds_container::level_side(info_.height, level); }

    /// The bytes of one level; empty for a level that the image does not have, or has no texels of.
    std::span<std::uint8_t const> level(std::uint32_t level) const;
    std::span<std::uint8_t> level(std::uint32_t level);

    /// An image of an invalid state with its reason.
    static IMAGE failed(std::string cause);
    /// The bytes of the header that every file of this format begins with.
    static std::size_t image_header_size(IMAGE_FORMAT format);
    /// As many bytes from the start of a DDS file as `read_header` can use. A header of the older kind ends before, and
    /// so may its whole file: a block of DXT1 lies within 136 bytes.
    static constexpr std::size_t longest_header = dds_container::dx10_header_size;
    /// Size, texel format and levels of a DDS file from its first bytes; there are no texels behind the surfaces. Valid
    /// for cube maps, volumes and arrays too, whose first picture it describes. A layout that no texel format names is
    /// TTF_UNKNOWN, and its surfaces are known all the same.
    static IMAGE read_header(std::span<std::uint8_t const> bytes);

private:
    void load_dds(std::span<std::uint8_t const> file);
    void load_coded(std::span<std::uint8_t const> file, IMAGE_FORMAT format);
    /// Fills the surfaces, tightly packed, from `texels` on.
    void lay_out(std::uint8_t* texels);
    void allocate();
    void fail(std::string cause);

    IMAGE_INFO info_;
    IMAGE_BYTES owned_;
    std::string cause_ = "no image";
};

/// The kind of file that the first bytes show: `dds`, `png`, `jpg`, `tif` or `unknown`. TGA has no mark to know it by.
IMAGE_FORMAT detect_image_format(std::span<std::uint8_t const> file);

}  // namespace IMAGE_LOADER
