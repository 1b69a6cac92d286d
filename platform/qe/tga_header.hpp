// The header of a TGA file, as the Truevision TGA file format 2.0 lays it down, and what of it this reader can read.
#pragma once

#include "platform/qe/file_in.hpp"

#include <cstdint>
#include <string>

namespace QE {

/// How the texels of a TGA file are coded. `unsupported` stands for everything that is not read.
enum class TGA_PIXEL_FORMAT : std::uint32_t {
    grey_8 = 0,
    grey_alpha_16 = 1,
    true_colour_15 = 2,
    true_colour_16 = 3,
    true_colour_24 = 4,
    true_colour_32 = 5,
    colour_map_8 = 6,
    colour_map_16 = 7,
    unsupported = 21,
};

class TGAHeader {
public:
    /// Bytes of the fixed header at the start of every file.
    static constexpr std::uint32_t byte_count = 18;

    /// Reads the header at the file's position and leaves the position behind it (in front of the image id). A file
    /// that is too short, or a header that announces texels that `read_pixels` does not read (interleaved rows, other
    /// image types, depths that do not fit their type), gives false: the position is put back, `format` is
    /// `unsupported`, and `cause` says why. A width or height of 0 is read: an image without texels.
    bool read(FileIn& file);

    std::uint32_t width() const { return width_; }
    std::uint32_t height() const { return height_; }
    TGA_PIXEL_FORMAT format() const { return format_; }
    bool is_run_length_coded() const { return run_length_coded_; }
    bool is_top_down() const { return top_down_; }
    bool is_right_to_left() const { return right_to_left_; }
    /// Bits of one texel as coded: of an index where there is a colour map.
    std::uint32_t bits_per_texel() const { return bits_per_texel_; }
    /// Bits that the header calls attributes. 0 in many files that do hold alpha.
    std::uint32_t attribute_bits() const { return attribute_bits_; }
    std::uint32_t id_length() const { return id_length_; }
    /// The index of the first stored entry of the colour map, how many entries there are, and the bits of one (0
    /// without a map). Files may carry a map that their texels do not use.
    std::uint32_t first_map_entry() const { return first_map_entry_; }
    std::uint32_t map_entry_count() const { return map_entry_count_; }
    std::uint32_t bits_per_map_entry() const { return bits_per_map_entry_; }

    /// What the last failed `read` found, for people. Empty after success.
    std::string const& cause() const { return cause_; }

private:
    bool fail(std::string cause);

    std::uint32_t width_ = 0;
    std::uint32_t height_ = 0;
    std::uint32_t bits_per_texel_ = 0;
    std::uint32_t attribute_bits_ = 0;
    std::uint32_t id_length_ = 0;
    std::uint32_t first_map_entry_ = 0;
    std::uint32_t map_entry_count_ = 0;
    std::uint32_t bits_per_map_entry_ = 0;
    TGA_PIXEL_FORMAT format_ = TGA_PIXEL_FORMAT::unsupported;
    bool run_length_coded_ = false;
    bool top_down_ = false;
    bool right_to_left_ = false;
    std::string cause_;
};

}  // namespace QE
