#include "atlas/atlas_texture.hpp"

#include "atlas/atlas_messages.hpp"

#include <utility>

ATLAS_TEXTURE::ATLAS_TEXTURE(std::string file_name, ATLAS_TYPE type, D3D_FORMAT format, std::int32_t width,
                             std::int32_t height)
    : file_name_(std::move(file_name)),
      type_(type),
      format_(format),
      width_(width),
      height_(height) {
}

ATLAS_TEXTURE::~ATLAS_TEXTURE() = default;

std::int64_t ATLAS_TEXTURE::texel_count() const {
    return std::int64_t{width_} * height_;
}

void ATLAS_TEXTURE::set_extents(std::int32_t width, std::int32_t height) {
    width_ = width;
    height_ = height;
}

ATLAS_SOURCE_TEXTURE::ATLAS_SOURCE_TEXTURE(std::string file_name, PIXEL_BUFFER texels)
    : ATLAS_TEXTURE(std::move(file_name), ATLAS_TYPE::source, texels.format(),
                    static_cast<std::int32_t>(texels.width()), static_cast<std::int32_t>(texels.height())),
      texels_(std::move(texels)),
      levels_(texels_->levels()) {
}

bool ATLAS_SOURCE_TEXTURE::is_format_supported(D3D_FORMAT format) const {
    return is_2d_format(format);
}

void ATLAS_SOURCE_TEXTURE::set_place(ATLAS_PAGE const& page, ATLAS_REGION const& region) {
    page_ = &page;
    region_ = region;
}

ATLAS_PAGE::ATLAS_PAGE(std::string file_name, ATLAS_TYPE type, D3D_FORMAT format, std::int32_t page_index,
                       std::int32_t width, std::int32_t height)
    : ATLAS_TEXTURE(std::move(file_name), type, format, width, height),
      page_index_(page_index) {
}

std::int32_t ATLAS_PAGE::depth() const {
    return 1;
}

void ATLAS_PAGE::save(std::filesystem::path const& path) {
    if (!write(path))
        report_atlas_error("Unable to save atlas " + file_name() + '.');
}
