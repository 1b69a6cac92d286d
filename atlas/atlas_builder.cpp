#include "atlas/atlas_builder.hpp"

#include "atlas/texture_atlas_2d.hpp"
#include "atlas/texture_atlas_volume.hpp"

#include <algorithm>
#include <string>
#include <utility>

std::map<D3D_FORMAT, ATLAS_GROUP> group_by_format(std::span<std::unique_ptr<ATLAS_SOURCE_TEXTURE> const> sources) {
    std::map<D3D_FORMAT, ATLAS_GROUP> groups;
    for (auto const& source : sources)
        groups[source->format()].push_back(source.get());
    for (auto& [format, group] : groups) {
        std::ranges::stable_sort(group, [](ATLAS_SOURCE_TEXTURE const* a, ATLAS_SOURCE_TEXTURE const* b) {
            return std::pair(a->texel_count(), a->width()) > std::pair(b->texel_count(), b->width());
        });
    }
    return groups;
}

std::unique_ptr<ATLAS_PAGE> ATLAS_BUILDER::create_page(ATLAS_SOURCE_TEXTURE& first, std::int32_t page_index) const {
    if (options_.is_set(ATLAS_OPTION::volume))
        return TEXTURE_ATLAS_VOLUME::create(options_, first, page_index);
    return TEXTURE_ATLAS_2D::create(options_, first, page_index);
}

void ATLAS_BUILDER::build_pages(ATLAS_GROUP const& group) {
    auto& pages = groups_.emplace_back();
    // Pages never take a size again that they have refused, so each size goes on at the page where the last one ended.
    std::map<std::pair<std::int32_t, std::int32_t>, std::size_t> first_open_page;
    for (ATLAS_SOURCE_TEXTURE* const texture : group) {
        std::size_t& page = first_open_page[{texture->width(), texture->height()}];
        while (page < pages.size() && !pages[page]->insert(*texture))
            ++page;
        if (page == pages.size())
            pages.push_back(create_page(*texture, static_cast<std::int32_t>(pages.size())));
    }
}

void ATLAS_BUILDER::finalize_all() {
    for (auto const& pages : groups_) {
        for (auto const& page : pages)
            page->finalize();
    }
}

void ATLAS_BUILDER::save_all(std::filesystem::path const& base) {
    for (auto const& pages : groups_) {
        for (auto const& page : pages) {
            std::filesystem::path path = base;
            path += std::to_string(page->page_index()) + page->extension();
            page->save(path);
        }
    }
}
