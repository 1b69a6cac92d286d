// Sound TIF files that FreeImage reads wrongly, brought into a form that it reads rightly. Of grey and palette texels
// of eight bits it makes a table of alpha by grey value: it takes the last texel's alpha for all of that grey, and
// where the file does not say how many samples a texel has it takes the texel behind for alpha.
#pragma once

#include "platform/image_loader/freeimage_bitmap.hpp"
#include "platform/image_loader/tif_layout.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace IMAGE_LOADER {

class TIF_FOR_FREEIMAGE {
public:
    explicit TIF_FOR_FREEIMAGE(std::span<std::uint8_t const> file);

    /// Why the file cannot be read; empty where nothing speaks against it.
    std::string const& problem() const { return problem_; }
    /// What FreeImage is to read.
    std::span<std::uint8_t const> file() const { return copy_.empty() ? file_ : std::span(copy_); }
    /// The texels of each row stand one sample after the other in what FreeImage reads, which is so much wider.
    std::uint32_t times_as_wide() const { return times_as_wide_; }
    /// Bits of grey, and of alpha, where texels are made of these two; else 0.
    std::uint32_t grey_and_alpha_bits() const { return has_grey_and_alpha_ ? layout_.bits_per_sample : 0; }
    /// What FreeImage read, with alpha where grey or palette texels have some. Null without the memory for it.
    FREEIMAGE_BITMAP mended(FREEIMAGE_BITMAP bitmap) const;

private:
    void spread_samples(TIF_DIRECTORY const& directory);
    FREEIMAGE_BITMAP with_alpha_8(FIBITMAP* samples) const;

    std::span<std::uint8_t const> file_;
    std::vector<std::uint8_t> copy_;
    TIF_LAYOUT layout_;
    std::string problem_;
    std::uint32_t times_as_wide_ = 1;
    bool has_grey_and_alpha_ = false;
};

}  // namespace IMAGE_LOADER
