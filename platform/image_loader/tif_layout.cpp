#include "platform/image_loader/tif_layout.hpp"

#include "platform/checked_size.hpp"

#include <algorithm>
#include <optional>

namespace IMAGE_LOADER {

namespace {

using checked_size::saturating_product;
using checked_size::saturating_sum;

constexpr std::uint32_t no_compression = 1;
/// Colours of which several texels share one.
constexpr std::uint32_t shared_colours = 6;

/// Bytes of a strip of so many rows.
std::uint64_t plain_strip_bytes(TIF_DIRECTORY const& directory, TIF_LAYOUT const& layout, std::uint64_t rows) {
    std::uint64_t const samples = layout.planes == 2 ? 1 : layout.samples_per_texel;
    std::uint64_t const bits =
        saturating_product(std::uint64_t{directory.number(TIF_TAG::width, 0)}, samples, layout.bits_per_sample);
    return saturating_product(bits / 8 + (bits % 8 != 0 ? 1 : 0), rows);
}

bool plain_strips_are_whole(TIF_DIRECTORY const& directory, TIF_LAYOUT const& layout,
                            TIF_DIRECTORY::FIELD const& offsets, std::uint64_t file_size) {
    std::uint64_t const height = directory.number(TIF_TAG::height, 0);
    std::uint64_t const rows = directory.number(TIF_TAG::rows_per_strip, UINT32_MAX);
    // With separate channels the strips of one follow those of the other.
    std::uint64_t const in_plane = rows == 0 ? 0 : (height + rows - 1) / rows;
    std::uint64_t const strips = in_plane * (layout.planes == 2 ? layout.samples_per_texel : 1);
    for (std::uint64_t i = 0; i < strips; ++i) {
        std::uint64_t const row = i % in_plane * rows;
        std::optional<std::uint64_t> const offset = directory.number(offsets, i);
        if (!offset ||
            saturating_sum(*offset, plain_strip_bytes(directory, layout, std::min(rows, height - row))) > file_size) {
            return false;
        }
    }
    return true;
}

}  // namespace

TIF_LAYOUT read_tif_layout(TIF_DIRECTORY const& directory) {
    TIF_LAYOUT layout;
    layout.samples_per_texel = directory.number(TIF_TAG::samples_per_texel, layout.samples_per_texel);
    layout.bits_per_sample = directory.number(TIF_TAG::bits_per_sample, layout.bits_per_sample);
    layout.compression = directory.number(TIF_TAG::compression, layout.compression);
    layout.photometric = directory.number(TIF_TAG::photometric, layout.photometric);
    layout.predictor = directory.number(TIF_TAG::predictor, layout.predictor);
    layout.planes = directory.number(TIF_TAG::planes, layout.planes);
    layout.tile_width = directory.number(TIF_TAG::tile_width, layout.tile_width);
    return layout;
}

TIF_LAYOUT read_tif_layout(std::span<std::uint8_t const> file) {
    return read_tif_layout(TIF_DIRECTORY(file));
}

bool tif_is_whole(std::span<std::uint8_t const> file) {
    TIF_DIRECTORY const directory(file);
    TIF_LAYOUT const layout = read_tif_layout(directory);
    bool const has_tiles = layout.tile_width != 0;
    auto const offsets = directory.find(has_tiles ? TIF_TAG::tile_offsets : TIF_TAG::strip_offsets);
    auto const bytes = directory.find(has_tiles ? TIF_TAG::tile_bytes : TIF_TAG::strip_bytes);
    if (!offsets) {
        return true;
    }
    if (layout.compression == no_compression && !has_tiles && layout.photometric != shared_colours) {
        return plain_strips_are_whole(directory, layout, *offsets, file.size());
    }
    for (std::uint64_t i = 0; bytes && i < offsets->count && i < bytes->count; ++i) {
        std::optional<std::uint64_t> const offset = directory.number(*offsets, i);
        std::optional<std::uint64_t> const count = directory.number(*bytes, i);
        if (!offset || !count || saturating_sum(*offset, *count) > file.size()) {
            return false;
        }
    }
    return true;
}

}  // namespace IMAGE_LOADER
