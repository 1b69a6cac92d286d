// A page of six faces. The index knows the kind and the record can be saved, but the builder makes none: nothing says
// which source would go to which face.
#pragma once

#include "atlas/atlas_texture.hpp"

class TEXTURE_ATLAS_CUBE : public ATLAS_PAGE {
public:
    /// Six empty faces. The file is written where `save` is told, whatever the name is.
    TEXTURE_ATLAS_CUBE(std::string file_name, D3D_FORMAT format, std::int32_t page_index, std::int32_t side);

    bool is_format_supported(D3D_FORMAT format) const override;
    std::int64_t texel_count() const override;
    /// Takes nothing.
    bool insert(ATLAS_SOURCE_TEXTURE& texture) override;
    void finalize() override;
    char const* extension() const override { return ".dds"; }

private:
    bool write(std::filesystem::path const& path) override;
};
