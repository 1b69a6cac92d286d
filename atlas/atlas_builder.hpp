// Packs loaded sources into pages: the first page that takes a source keeps it, and a new page is made when none does.
#pragma once

#include "atlas/atlas_options.hpp"
#include "atlas/atlas_texture.hpp"

#include <filesystem>
#include <map>
#include <memory>
#include <span>
#include <vector>

/// Sources of one format, in the order in which they are packed and listed.
using ATLAS_GROUP = std::vector<ATLAS_SOURCE_TEXTURE*>;

/// The sources by their format, ascending, each group with the most texels first, among equals the widest first, and
/// otherwise in the order given.
std::map<D3D_FORMAT, ATLAS_GROUP> group_by_format(std::span<std::unique_ptr<ATLAS_SOURCE_TEXTURE> const> sources);

class ATLAS_BUILDER {
public:
    /// `options` outlives the builder.
    explicit ATLAS_BUILDER(ATLAS_OPTIONS const& options) : options_(options) {}

    /// Places every source of the next group. Page numbers begin at 0 in every group, so that of two groups the later
    /// one's pages take the file names of the earlier one's; sources that are loaded alike make one group. A source
    /// that cannot be placed is reported. The sources outlive the builder.
    void build_pages(ATLAS_GROUP const& group);
    /// Of every page of every group, in the order in which they were made. Throws std::bad_alloc.
    void finalize_all();
    /// To `base`, the page's number and its extension; a page that cannot be saved is reported.
    void save_all(std::filesystem::path const& base);

    std::vector<std::vector<std::unique_ptr<ATLAS_PAGE>>> const& groups() const { return groups_; }

private:
    std::unique_ptr<ATLAS_PAGE> create_page(ATLAS_SOURCE_TEXTURE& first, std::int32_t page_index) const;

    ATLAS_OPTIONS const& options_;
    std::vector<std::vector<std::unique_ptr<ATLAS_PAGE>>> groups_;
};
