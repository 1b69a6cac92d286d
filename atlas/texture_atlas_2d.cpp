#include "atlas/texture_atlas_2d.hpp"

#include "atlas/atlas_messages.hpp"
#include "atlas/device_limits.hpp"
#include "atlas/save_page.hpp"

#include <algorithm>

namespace {

std::int32_t page_side(ATLAS_OPTIONS const& options, ATLAS_OPTION option) {
    return std::min(options.number(option).value_or(max_texture_extent), max_texture_extent);
}

/// A level of a texture at its place in the same level of the page. Places are divided down with the level, so that
/// textures of few texels share the page's small levels.
COPY_TARGET area_in_level(PLACED_RECTANGLE const& place, std::uint32_t level) {
    COPY_TARGET area;
    area.level = level;
    area.left = static_cast<std::uint32_t>(place.left) >> level;
    area.top = static_cast<std::uint32_t>(place.top) >> level;
    area.width = std::max(static_cast<std::uint32_t>(place.right - place.left) >> level, 1U);
    area.height = std::max(static_cast<std::uint32_t>(place.bottom - place.top) >> level, 1U);
    return area;
}

}  // namespace

TEXTURE_ATLAS_2D::TEXTURE_ATLAS_2D(std::string file_name, D3D_FORMAT format, std::int32_t page_index,
                                   PAGE_EXTENTS extents)
    : ATLAS_PAGE(std::move(file_name), ATLAS_TYPE::page_2d, format, page_index, extents.width, extents.height) {
}

std::unique_ptr<TEXTURE_ATLAS_2D> TEXTURE_ATLAS_2D::create(ATLAS_OPTIONS const& options, ATLAS_SOURCE_TEXTURE& first,
                                                           std::int32_t page_index) {
    std::string const* const base = options.argument(ATLAS_OPTION::output);
    std::string name = (base != nullptr ? *base : std::string()) + std::to_string(page_index) + ".tga";
    PAGE_EXTENTS const extents = {page_side(options, ATLAS_OPTION::width), page_side(options, ATLAS_OPTION::height)};
    auto page = std::make_unique<TEXTURE_ATLAS_2D>(std::move(name), first.format(), page_index, extents);
    if (!page->is_format_supported(first.format())) {
        report_atlas_error("Texture " + first.file_name() + " has format that is unsupported for 2D atlases.");
    } else if (!page->create_packer(!options.is_set(ATLAS_OPTION::no_mip_map))) {
        report_atlas_error("Unable to create atlas for texture " + first.file_name() + '.');
    } else if (!page->insert(first)) {
        report_atlas_error("Inserting texture " + first.file_name() + " into atlas failed.");
        report_atlas_error("Check that the texture has atlas-compatible dimensions.");
    }
    return page;
}

bool TEXTURE_ATLAS_2D::create_packer(bool has_mip_maps) {
    if (width() < 1 || height() < 1)
        return false;
    auto const side = static_cast<std::uint32_t>(std::max(width(), height()));
    levels_ = has_mip_maps ? dds_container::full_chain_length(side) : 1;
    packer_.emplace(width(), height());
    return true;
}

bool TEXTURE_ATLAS_2D::is_format_supported(D3D_FORMAT format) const {
    return is_2d_format(format);
}

bool TEXTURE_ATLAS_2D::insert(ATLAS_SOURCE_TEXTURE& texture) {
    std::optional<PLACED_RECTANGLE> const place =
        packer_ ? packer_->insert(texture.width(), texture.height()) : std::nullopt;
    if (!place)
        return false;
    most_levels_copied_ = std::max(most_levels_copied_, std::min(levels_, texture.levels()));
    placed_.emplace_back(&texture, *place);
    texture.set_place(*this, {place->left, place->top, place->right - place->left, place->bottom - place->top, 0});
    return true;
}

void TEXTURE_ATLAS_2D::finalize() {
    if (most_levels_copied_ < 1)
        return;
    PAGE_EXTENTS const extents = packer_->shrunk_extents();
    set_extents(extents.width, extents.height);
    warn_of_lost_texels();
    PIXEL_BUFFER page(format(), static_cast<std::uint32_t>(width()), static_cast<std::uint32_t>(height()),
                      most_levels_copied_);
    // In the order of placing: where two textures cover the same texels, the later one shows.
    for (auto const& [texture, place] : placed_) {
        for (std::uint32_t level = 0; level < std::min(levels_, texture->levels()); ++level)
            copy_level(*texture->texels(), level, page, area_in_level(place, level));
        texture->release_texels();
    }
    packer_.reset();
    set_texels(std::move(page));
}

/// The rule of packing lets a rectangle cover one that it encloses on an axis, and halves a page although something
/// lies within the half that goes. Both are kept, but nobody should have to find them in a game.
void TEXTURE_ATLAS_2D::warn_of_lost_texels() const {
    bool const has_overlaps = packer_->has_overlaps();
    for (std::size_t i = 0; i < placed_.size(); ++i) {
        auto const& [texture, place] = placed_[i];
        if (place.right > width() || place.bottom > height()) {
            report_atlas_warning("Texture " + texture->file_name() + " lies outside of atlas " + file_name() + '.');
            continue;
        }
        for (std::size_t later = i + 1; has_overlaps && later < placed_.size(); ++later) {
            PLACED_RECTANGLE const& other = placed_[later].second;
            if (place.left < other.right && other.left < place.right && place.top < other.bottom &&
                other.top < place.bottom) {
                report_atlas_warning("Texture " + texture->file_name() + " is covered by texture " +
                                     placed_[later].first->file_name() + " in atlas " + file_name() + '.');
                break;
            }
        }
    }
}

bool TEXTURE_ATLAS_2D::write(std::filesystem::path const& path) {
    if (texels())
        return save_targa(path, *texels());
    // A page that could not take its first texture, nor any later one, is saved all the same: empty, at its full size.
    return packer_ && save_targa(path, PIXEL_BUFFER(format(), static_cast<std::uint32_t>(width()),
                                                    static_cast<std::uint32_t>(height()), 1));
}
