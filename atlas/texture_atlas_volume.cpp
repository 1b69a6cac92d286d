#include "atlas/texture_atlas_volume.hpp"

#include "atlas/atlas_messages.hpp"
#include "atlas/device_limits.hpp"
#include "atlas/save_page.hpp"

#include <algorithm>
#include <bit>
#include <utility>

TEXTURE_ATLAS_VOLUME::TEXTURE_ATLAS_VOLUME(std::string file_name, ATLAS_SOURCE_TEXTURE const& first,
                                           std::int32_t page_index, std::int32_t depth)
    : ATLAS_PAGE(std::move(file_name), ATLAS_TYPE::page_volume, first.format(), page_index, first.width(),
                 first.height()),
      depth_(depth) {
}

std::unique_ptr<TEXTURE_ATLAS_VOLUME>
TEXTURE_ATLAS_VOLUME::create(ATLAS_OPTIONS const& options, ATLAS_SOURCE_TEXTURE& first, std::int32_t page_index) {
    std::string const* const base = options.argument(ATLAS_OPTION::output);
    std::string name = (base != nullptr ? *base : std::string()) + std::to_string(page_index) + ".dds";
    std::int32_t const depth =
        std::min(options.number(ATLAS_OPTION::depth).value_or(max_volume_extent), max_volume_extent);
    auto page = std::make_unique<TEXTURE_ATLAS_VOLUME>(std::move(name), first, page_index, depth);
    if (!page->is_format_supported(first.format())) {
        report_atlas_error("Texture " + first.file_name() + " has format that is unsupported for volume atlases.");
    } else if (!page->create_packer()) {
        report_atlas_error("Unable to create atlas for texture " + first.file_name() + '.');
        report_atlas_error("Check that the texture has volume atlas-compatible dimensions.");
    } else if (!page->insert(first)) {
        report_atlas_error("Inserting texture " + first.file_name() + " into atlas failed.");
        report_atlas_error("Check that the texture has atlas-compatible dimensions.");
    }
    return page;
}

bool TEXTURE_ATLAS_VOLUME::create_packer() {
    if (depth_ < 1 || width() > max_volume_extent || height() > max_volume_extent)
        return false;
    packer_.emplace(width(), height(), depth_);
    return true;
}

bool TEXTURE_ATLAS_VOLUME::is_format_supported(D3D_FORMAT format) const {
    return is_volume_format(format);
}

std::int64_t TEXTURE_ATLAS_VOLUME::texel_count() const {
    return ATLAS_PAGE::texel_count() * depth_;
}

bool TEXTURE_ATLAS_VOLUME::insert(ATLAS_SOURCE_TEXTURE& texture) {
    std::optional<std::int32_t> const slice =
        packer_ ? packer_->insert(texture.width(), texture.height()) : std::nullopt;
    if (!slice)
        return false;
    placed_.push_back(&texture);
    texture.set_place(*this, {0, 0, texture.width(), texture.height(), *slice});
    return true;
}

void TEXTURE_ATLAS_VOLUME::finalize() {
    if (placed_.empty())
        return;
    auto const slices = std::bit_ceil(static_cast<std::uint32_t>(placed_.size()));
    auto const page_width = static_cast<std::uint32_t>(width());
    auto const page_height = static_cast<std::uint32_t>(height());
    PIXEL_BUFFER page(format(), page_width, page_height, 1, slices);
    for (std::uint32_t slice = 0; slice < placed_.size(); ++slice) {
        copy_level(*placed_[slice]->texels(), 0, page, {0, slice, 0, 0, page_width, page_height});
        placed_[slice]->release_texels();
    }
    depth_ = static_cast<std::int32_t>(slices);
    packer_.reset();
    set_texels(std::move(page));
}

bool TEXTURE_ATLAS_VOLUME::write(std::filesystem::path const& path) {
    return texels() && save_dds(path, *texels(), DDS_SHAPE::volume);
}
