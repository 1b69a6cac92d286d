#include "platform/tool_data_builder/write_block_dds.hpp"

#include "blocks/encode.hpp"
#include "platform/image_loader/image_memory.hpp"

#include <optional>
#include <vector>

namespace TOOLDATABUILDER {

namespace {

using dds_container::DXGI;

DXGI dxgi_of(blocks::FORMAT format) {
    switch (format) {
    case blocks::FORMAT::bc1:
        return DXGI::bc1_unorm;
    case blocks::FORMAT::bc2:
        return DXGI::bc2_unorm;
    case blocks::FORMAT::bc3:
        return DXGI::bc3_unorm;
    case blocks::FORMAT::bc4_unorm:
        return DXGI::bc4_unorm;
    case blocks::FORMAT::bc4_snorm:
        return DXGI::bc4_snorm;
    case blocks::FORMAT::bc5_unorm:
        return DXGI::bc5_unorm;
    case blocks::FORMAT::bc5_snorm:
        return DXGI::bc5_snorm;
    case blocks::FORMAT::bc6h_uf16:
        return DXGI::bc6h_uf16;
    case blocks::FORMAT::bc6h_sf16:
        return DXGI::bc6h_sf16;
    case blocks::FORMAT::bc7:
        return DXGI::bc7_unorm;
    }
    return DXGI::unknown;
}

}  // namespace

bool write_block_dds(std::filesystem::path const& target, std::span<blocks::RGBA8_VIEW const> levels,
                     BLOCK_DDS_SETTINGS const& settings, std::string& cause) {
    std::vector<IMAGE_LOADER::IMAGE_BYTES> encoded;
    std::vector<std::span<std::uint8_t const>> surfaces;
    for (blocks::RGBA8_VIEW const& level : levels) {
        auto const bytes = blocks::encoded_bytes(settings.format, level.width, level.height);
        encoded.emplace_back(bytes.value_or(0));
        if (!blocks::encode_image(settings.format, level, settings.options, settings.threads, encoded.back())) {
            cause = "an image of " + std::to_string(level.width) + " x " + std::to_string(level.height) +
                    " texels cannot be encoded";
            return false;
        }
    }
    surfaces.assign(encoded.begin(), encoded.end());

    dds_container::DDS_DESCRIPTION description;
    description.header_kind = settings.header_kind;
    description.width = levels.empty() ? 0 : levels.front().width;
    description.height = levels.empty() ? 0 : levels.front().height;
    description.mip_count = static_cast<std::uint32_t>(levels.size());
    description.format = dxgi_of(settings.format);
    std::optional<std::vector<std::uint8_t>> const file = dds_container::write_dds(description, surfaces, cause);
    return file && QE::replace_file(target, *file, cause, settings.earlier);
}

}  // namespace TOOLDATABUILDER
