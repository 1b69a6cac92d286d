#include "platform/directxtex/scratch_image.hpp"

#include "platform/dds_container/dds_container.hpp"

#include <algorithm>
#include <new>

namespace DirectX {

namespace {

using dds_container::DXGI_FORMAT_INFO;

DXGI_FORMAT_INFO const& info_of(DXGI_FORMAT format) {
    return dds_container::dxgi_format_info(static_cast<dds_container::DXGI>(format));
}

/// A view without texels, as the format lays it out.
Image lay_out(DXGI_FORMAT format, std::uint32_t width, std::uint32_t height) {
    DXGI_FORMAT_INFO const& info = info_of(format);
    std::size_t const across = info.bytes_per_block != 0 ? (width + 3) / 4 : width;
    std::size_t const down = info.bytes_per_block != 0 ? (height + 3) / 4 : height;
    std::size_t const row_pitch = across * std::max(info.bytes_per_block, info.bytes_per_texel);
    return {width, height, format, row_pitch, row_pitch * down, nullptr};
}

}  // namespace

HRESULT ScratchImage::Initialize2D(DXGI_FORMAT format, std::size_t width, std::size_t height, std::size_t array_size,
                                   std::size_t mip_levels) noexcept {
    Release();
    DXGI_FORMAT_INFO const& info = info_of(format);
    if ((info.bytes_per_texel == 0 && info.bytes_per_block == 0) || width == 0 || height == 0 ||
        !checked_size::is_within_bounds(width, height) || array_size != 1) {
        return E_INVALIDARG;
    }
    auto const columns = static_cast<std::uint32_t>(width);
    auto const rows = static_cast<std::uint32_t>(height);
    std::size_t const all_levels = dds_container::full_chain_length(std::max(columns, rows));
    if (mip_levels > all_levels) {
        return E_INVALIDARG;
    }
    try {
        std::uint64_t bytes = 0;
        for (std::uint32_t level = 0; level < (mip_levels != 0 ? mip_levels : all_levels); ++level) {
            images_.push_back(
                lay_out(format, dds_container::level_side(columns, level), dds_container::level_side(rows, level)));
            bytes = checked_size::saturating_sum(bytes, images_.back().slicePitch);
        }
        memory_.resize(checked_size::memory_size(bytes));
    } catch (std::bad_alloc const&) {
        Release();
        return E_OUTOFMEMORY;
    }
    std::uint8_t* pixels = memory_.data();
    for (Image& image : images_) {
        image.pixels = pixels;
        pixels += image.slicePitch;
    }
    metadata_ = {width, height, 1, 1, images_.size(), 0, 0, format, TEX_DIMENSION_TEXTURE2D};
    return S_OK;
}

void ScratchImage::Release() noexcept {
    metadata_ = {};
    images_.clear();
    memory_.clear();
    memory_.shrink_to_fit();
}

Image const* ScratchImage::GetImage(std::size_t mip, std::size_t item, std::size_t slice) const noexcept {
    return mip < images_.size() && item == 0 && slice == 0 ? &images_[mip] : nullptr;
}

}  // namespace DirectX
