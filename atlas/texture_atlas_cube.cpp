#include "atlas/texture_atlas_cube.hpp"

#include "atlas/save_page.hpp"

#include <utility>

namespace {

constexpr std::uint32_t faces = 6;

}  // namespace

TEXTURE_ATLAS_CUBE::TEXTURE_ATLAS_CUBE(std::string file_name, D3D_FORMAT format, std::int32_t page_index,
                                       std::int32_t side)
    : ATLAS_PAGE(std::move(file_name), ATLAS_TYPE::page_cube, format, page_index, side, side) {
    set_texels(PIXEL_BUFFER(format, static_cast<std::uint32_t>(side), static_cast<std::uint32_t>(side), 1, faces));
}

bool TEXTURE_ATLAS_CUBE::is_format_supported(D3D_FORMAT format) const {
    return is_cube_format(format);
}

std::int64_t TEXTURE_ATLAS_CUBE::texel_count() const {
    return ATLAS_PAGE::texel_count() * faces;
}

bool TEXTURE_ATLAS_CUBE::insert(ATLAS_SOURCE_TEXTURE&) {
    return false;
}

void TEXTURE_ATLAS_CUBE::finalize() {
}

bool TEXTURE_ATLAS_CUBE::write(std::filesystem::path const& path) {
    return save_dds(path, *texels(), DDS_SHAPE::cube);
}
