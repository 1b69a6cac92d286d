#include "platform/image_loader/load_dds.hpp"

#include "platform/image_loader/convert.hpp"

namespace IMAGE_LOADER {

TEXEL_FORMAT_INFO dds_texel_format(dds_container::DDS_DESCRIPTION const& description) {
    TEXTURE_TEXEL_FORMAT const format = texel_format_of(description);
    if (format != TTF_UNKNOWN) {
        return texel_format_info(format);
    }
    TEXEL_FORMAT_INFO own;
    own.name = "masked";
    own.kind = TEXEL_KIND::masks;
    own.bytes_per_texel = description.bytes_per_texel;
    own.masks = description.masks;
    return own;
}

bool decode_dds_surface(std::span<std::uint8_t const> file, dds_container::DDS_DESCRIPTION const& description,
                        dds_container::DDS_SURFACE const& surface, std::span<std::uint8_t> rgba, std::string& cause) {
    if (surface.offset > file.size() || surface.size > file.size() - surface.offset) {
        cause = "the file ends before the texels of the surface do";
        return false;
    }
    return decode_surface(dds_texel_format(description), file.subspan(surface.offset, surface.size), surface.row_pitch,
                          surface.width, surface.height, rgba, cause);
}

}  // namespace IMAGE_LOADER
