// A page whose sources lie side by side. Its file is a Targa of the top level, which the action compresses afterwards.
#pragma once

#include "atlas/atlas_options.hpp"
#include "atlas/atlas_packer_2d.hpp"
#include "atlas/atlas_texture.hpp"

#include <memory>
#include <utility>
#include <vector>

class TEXTURE_ATLAS_2D : public ATLAS_PAGE {
public:
    /// The page for a first texture that no other page takes, with that texture in it. Its sides are those of the
    /// options, never above the device's. What goes wrong is reported; the page is then one that takes nothing, or one
    /// without that texture.
    static std::unique_ptr<TEXTURE_ATLAS_2D> create(ATLAS_OPTIONS const& options, ATLAS_SOURCE_TEXTURE& first,
                                                    std::int32_t page_index);

    /// A page that takes nothing yet; `create` goes on from here.
    TEXTURE_ATLAS_2D(std::string file_name, D3D_FORMAT format, std::int32_t page_index, PAGE_EXTENTS extents);

    bool is_format_supported(D3D_FORMAT format) const override;
    bool insert(ATLAS_SOURCE_TEXTURE& texture) override;
    void finalize() override;
    char const* extension() const override { return ".tga"; }

private:
    bool create_packer(bool has_mip_maps);
    void warn_of_lost_texels() const;
    bool write(std::filesystem::path const& path) override;

    /// Levels of the page as it was made; its texels may end up with fewer.
    std::uint32_t levels_ = 0;
    std::uint32_t most_levels_copied_ = 0;
    /// Nothing in a page that could not be made.
    std::optional<ATLAS_PACKER_2D> packer_;
    std::vector<std::pair<ATLAS_SOURCE_TEXTURE*, PLACED_RECTANGLE>> placed_;
};
