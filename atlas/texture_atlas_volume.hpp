// A page of slices, each of which holds one source of exactly the page's size. Its file is a DDS volume.
#pragma once

#include "atlas/atlas_options.hpp"
#include "atlas/atlas_packer_volume.hpp"
#include "atlas/atlas_texture.hpp"

#include <memory>
#include <vector>

class TEXTURE_ATLAS_VOLUME : public ATLAS_PAGE {
public:
    /// The page for a first texture, with that texture in it: as wide and high as it, and as deep as the options and
    /// the device allow. What goes wrong is reported; the page then takes nothing.
    static std::unique_ptr<TEXTURE_ATLAS_VOLUME> create(ATLAS_OPTIONS const& options, ATLAS_SOURCE_TEXTURE& first,
                                                        std::int32_t page_index);

    /// A page that takes nothing yet; `create` goes on from here.
    TEXTURE_ATLAS_VOLUME(std::string file_name, ATLAS_SOURCE_TEXTURE const& first, std::int32_t page_index,
                         std::int32_t depth);

    bool is_format_supported(D3D_FORMAT format) const override;
    std::int64_t texel_count() const override;
    /// The most slices before the page is finalized, and those that it has afterwards: a power of two.
    std::int32_t depth() const override { return depth_; }
    bool insert(ATLAS_SOURCE_TEXTURE& texture) override;
    void finalize() override;
    char const* extension() const override { return ".dds"; }

private:
    bool create_packer();
    bool write(std::filesystem::path const& path) override;

    std::int32_t depth_;
    /// Nothing in a page that could not be made.
    std::optional<ATLAS_PACKER_VOLUME> packer_;
    std::vector<ATLAS_SOURCE_TEXTURE*> placed_;
};
