#include "dds/compression_format.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

using NVTT = NVTT_FORMAT;
using DXGI = DXGI_CHOICE;

/// What one name means. A row chooses an nvtt format or a DXGI one, never both.
struct ROW {
    QLatin1String name;
    COMPRESSION_FORMAT opaque;
    COMPRESSION_FORMAT translucent;
    COMPRESSION_FORMAT gamma_opaque;
    COMPRESSION_FORMAT gamma_translucent;
};

COMPRESSION_FORMAT nvtt(NVTT format) {
    return {format, DXGI::none, false, {}};
}

COMPRESSION_FORMAT dxgi(DXGI format) {
    return {NVTT::dxt5, format, false, {}};
}

COMPRESSION_FORMAT with_alpha(COMPRESSION_FORMAT format) {
    format.uncompressed_with_alpha = true;
    return format;
}

/// A name whose format does not depend on the image's alpha.
ROW fixed(char const* name, COMPRESSION_FORMAT const& linear, COMPRESSION_FORMAT const& gamma) {
    return {QLatin1String(name), linear, linear, gamma, gamma};
}

/// A name that means DXT1 for opaque images.
ROW dxt1_or(char const* name, NVTT translucent, DXGI gamma_translucent) {
    return {QLatin1String(name), nvtt(NVTT::dxt1), nvtt(translucent), dxgi(DXGI::bc1_unorm_srgb),
            dxgi(gamma_translucent)};
}

std::array<ROW, 14> const& rows() {
    static COMPRESSION_FORMAT const l8{NVTT::uncompressed, DXGI::none, false, QStringLiteral("l8")};
    static std::array<ROW, 14> const rows = {
        fixed("l8", l8, l8),
        fixed("rgb", nvtt(NVTT::uncompressed), dxgi(DXGI::r8g8b8a8_unorm_srgb)),
        fixed("rgba", with_alpha(nvtt(NVTT::uncompressed)), with_alpha(dxgi(DXGI::r8g8b8a8_unorm_srgb))),
        fixed("dxt1", nvtt(NVTT::dxt1), dxgi(DXGI::bc1_unorm_srgb)),
        fixed("dxt1a", nvtt(NVTT::dxt1_one_bit_alpha), dxgi(DXGI::bc1_unorm_srgb)),
        fixed("dxt3", nvtt(NVTT::dxt3), dxgi(DXGI::bc2_unorm_srgb)),
        fixed("dxt5", nvtt(NVTT::dxt5), dxgi(DXGI::bc3_unorm_srgb)),
        fixed("dxt5n", nvtt(NVTT::dxt5_normal_map), nvtt(NVTT::dxt5_normal_map)),
        dxt1_or("dxt1_or_dxt3", NVTT::dxt3, DXGI::bc2_unorm_srgb),
        dxt1_or("dxt1_or_dxt5", NVTT::dxt5, DXGI::bc3_unorm_srgb),
        dxt1_or("dxt1_or_dxt1a", NVTT::dxt1_one_bit_alpha, DXGI::bc1_unorm_srgb),
        fixed("bc7", dxgi(DXGI::bc7_unorm), dxgi(DXGI::bc7_unorm_srgb)),
        fixed("bc5n", dxgi(DXGI::bc5_snorm), dxgi(DXGI::bc5_snorm)),
        fixed("bc6", dxgi(DXGI::bc6h_uf16), dxgi(DXGI::bc6h_uf16)),
    };
    return rows;
}

}  // namespace

bool is_fully_opaque(QString const& format_name, IMAGE_LOADER::IMAGE const& image) {
    bool const depends_on_alpha = format_name == QLatin1String("dxt1_or_dxt3") ||
                                  format_name == QLatin1String("dxt1_or_dxt5") ||
                                  format_name == QLatin1String("dxt1_or_dxt1a");
    if (!depends_on_alpha)
        return true;
    std::span<std::uint8_t const> const texels = image.level(0);
    for (std::size_t alpha = 3; alpha < texels.size(); alpha += 4) {
        if (texels[alpha] < 255)
            return false;
    }
    return true;
}

std::optional<COMPRESSION_FORMAT> select_compression_format(QString const& format_name, bool opaque,
                                                            bool need_gamma_correction) {
    auto const row =
        std::find_if(rows().begin(), rows().end(), [&](ROW const& candidate) { return candidate.name == format_name; });
    if (row == rows().end())
        return {};
    if (need_gamma_correction)
        return opaque ? row->gamma_opaque : row->gamma_translucent;
    return opaque ? row->opaque : row->translucent;
}

bool is_routed_to_d3d(DXGI_CHOICE format) {
    switch (format) {
    case DXGI::bc1_unorm_srgb:
    case DXGI::bc2_unorm_srgb:
    case DXGI::bc3_unorm_srgb:
    case DXGI::bc5_unorm:
    case DXGI::bc5_snorm:
    case DXGI::bc6h_uf16:
    case DXGI::bc6h_sf16:
    case DXGI::bc7_unorm:
    case DXGI::bc7_unorm_srgb:
        return true;
    case DXGI::none:
    case DXGI::r8g8b8a8_unorm_srgb:
        break;
    }
    return false;
}
