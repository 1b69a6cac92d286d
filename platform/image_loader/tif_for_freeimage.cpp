#include "platform/image_loader/tif_for_freeimage.hpp"

#include "platform/checked_size.hpp"

#include <algorithm>
#include <array>
#include <cstring>

namespace IMAGE_LOADER {

namespace {

constexpr std::uint32_t old_jpeg = 6;
constexpr std::uint32_t jpeg = 7;
constexpr std::uint32_t differences = 2;
constexpr std::uint32_t unsigned_numbers = 1;

/// Texels of grey and alpha of 16 bits, which FreeImage takes for one number of 32 bits.
FREEIMAGE_BITMAP with_alpha_16(FIBITMAP* pairs) {
    unsigned const width = FreeImage_GetWidth(pairs);
    unsigned const height = FreeImage_GetHeight(pairs);
    FREEIMAGE_BITMAP bitmap(FreeImage_AllocateT(FIT_RGBA16, static_cast<int>(width), static_cast<int>(height)));
    for (unsigned y = 0; bitmap && y < height; ++y) {
        BYTE const* source = FreeImage_GetScanLine(pairs, static_cast<int>(y));
        BYTE* target = FreeImage_GetScanLine(bitmap.get(), static_cast<int>(y));
        for (unsigned x = 0; x < width; ++x, source += 4, target += sizeof(FIRGBA16)) {
            std::array<std::uint16_t, 2> texel;
            std::memcpy(texel.data(), source, sizeof(texel));
            FIRGBA16 const wide = {texel[0], texel[0], texel[0], texel[1]};
            std::memcpy(target, &wide, sizeof(wide));
        }
    }
    return bitmap;
}

/// Sums up the differences that a row, or each tile's part of it, holds.
void undo_differences(std::span<BYTE> row, std::size_t part_bytes, std::size_t samples) {
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (i % part_bytes >= samples) {
            row[i] = static_cast<BYTE>(row[i] + row[i - samples]);
        }
    }
}

}  // namespace

TIF_FOR_FREEIMAGE::TIF_FOR_FREEIMAGE(std::span<std::uint8_t const> file) : file_(file) {
    TIF_DIRECTORY const directory(file);
    layout_ = read_tif_layout(directory);
    std::uint32_t const samples = layout_.samples_per_texel;
    bool const is_grey_or_palette_8 = layout_.is_grey_or_palette() && layout_.bits_per_sample == 8;
    if (is_grey_or_palette_8 && samples == 1 && !directory.find(TIF_TAG::samples_per_texel)) {
        copy_ = directory.file_with(std::array{TIF_DIRECTORY::CHANGE{TIF_TAG::samples_per_texel, 1}});
    } else if (is_grey_or_palette_8 && samples > 1) {
        spread_samples(directory);
    } else if (samples == 2 && layout_.bits_per_sample == 16) {
        has_grey_and_alpha_ = true;
        if (!directory.find(TIF_TAG::sample_format)) {
            copy_ = directory.file_with(std::array{TIF_DIRECTORY::CHANGE{TIF_TAG::sample_format, unsigned_numbers}});
        }
    } else if (samples == 2) {
        problem_ = "grey with alpha is not supported in a TIF file of " + std::to_string(layout_.bits_per_sample) +
                   " bits a sample";
    }
}

void TIF_FOR_FREEIMAGE::spread_samples(TIF_DIRECTORY const& directory) {
    std::uint32_t const samples = layout_.samples_per_texel;
    std::uint64_t const width = checked_size::saturating_product(directory.number(TIF_TAG::width, 0), samples);
    if (layout_.planes != 1 || layout_.compression == old_jpeg || layout_.compression == jpeg) {
        problem_ = "grey with alpha is not supported in a TIF file that is JPEG coded or has its channels apart";
    } else if (!checked_size::is_within_bounds(width, 1)) {
        problem_ = "a TIF file of " + std::to_string(samples) + " samples a texel is not supported at this width";
    }
    if (!problem_.empty()) {
        return;
    }
    has_grey_and_alpha_ = true;
    times_as_wide_ = samples;
    std::vector<TIF_DIRECTORY::CHANGE> changes = {
        {TIF_TAG::width, static_cast<std::uint32_t>(width)},
        {TIF_TAG::samples_per_texel, 1},
        {TIF_TAG::bits_per_sample, 8},
        {TIF_TAG::predictor, {}},
        {TIF_TAG::extra_samples, {}},
        {TIF_TAG::sample_format, {}},
    };
    if (layout_.tile_width != 0) {
        changes.push_back({TIF_TAG::tile_width, layout_.tile_width * samples});
    }
    copy_ = directory.file_with(changes);
}

FREEIMAGE_BITMAP TIF_FOR_FREEIMAGE::mended(FREEIMAGE_BITMAP bitmap) const {
    if (!bitmap || !has_grey_and_alpha_) {
        return bitmap;
    }
    FREEIMAGE_BITMAP made;
    if (layout_.bits_per_sample == 16 && FreeImage_GetImageType(bitmap.get()) == FIT_UINT32) {
        made = with_alpha_16(bitmap.get());
    } else if (layout_.bits_per_sample == 8 && FreeImage_GetImageType(bitmap.get()) == FIT_BITMAP &&
               FreeImage_GetBPP(bitmap.get()) == 8) {
        made = with_alpha_8(bitmap.get());
    }
    if (made) {
        FreeImage_SetDotsPerMeterX(made.get(), FreeImage_GetDotsPerMeterX(bitmap.get()));
        FreeImage_SetDotsPerMeterY(made.get(), FreeImage_GetDotsPerMeterY(bitmap.get()));
    }
    return made;
}

FREEIMAGE_BITMAP TIF_FOR_FREEIMAGE::with_alpha_8(FIBITMAP* samples) const {
    unsigned const width = FreeImage_GetWidth(samples) / times_as_wide_;
    unsigned const height = FreeImage_GetHeight(samples);
    RGBQUAD const* const colours = FreeImage_GetPalette(samples);
    FREEIMAGE_BITMAP bitmap(FreeImage_Allocate(static_cast<int>(width), static_cast<int>(height), 32, FI_RGBA_RED_MASK,
                                               FI_RGBA_GREEN_MASK, FI_RGBA_BLUE_MASK));
    std::size_t const row_bytes = std::size_t{width} * times_as_wide_;
    std::size_t const part_bytes = layout_.tile_width != 0 ? std::size_t{layout_.tile_width} * times_as_wide_
                                                           : std::max<std::size_t>(row_bytes, 1);
    for (unsigned y = 0; bitmap && y < height; ++y) {
        BYTE* source = FreeImage_GetScanLine(samples, static_cast<int>(y));
        BYTE* target = FreeImage_GetScanLine(bitmap.get(), static_cast<int>(y));
        if (layout_.predictor == differences) {
            undo_differences({source, row_bytes}, part_bytes, times_as_wide_);
        }
        for (unsigned x = 0; x < width; ++x, source += times_as_wide_, target += 4) {
            target[FI_RGBA_RED] = colours[source[0]].rgbRed;
            target[FI_RGBA_GREEN] = colours[source[0]].rgbGreen;
            target[FI_RGBA_BLUE] = colours[source[0]].rgbBlue;
            target[FI_RGBA_ALPHA] = source[1];
        }
    }
    return bitmap;
}

}  // namespace IMAGE_LOADER
