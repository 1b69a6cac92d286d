// From the rule's name of a compression format to the encoding that a back-end writes. Three things decide: the name,
// whether the image is fully opaque, and whether gamma correction is asked for.
#pragma once

#include "platform/image_loader/image.hpp"

#include <QString>

#include <cstdint>
#include <optional>

/// The numbers of NVIDIA Texture Tools' format enumeration, which both the nvidia and the ATI back-end take.
enum class NVTT_FORMAT : std::int32_t {
    uncompressed = 0,
    dxt1 = 1,
    dxt1_one_bit_alpha = 2,
    dxt3 = 3,
    dxt5 = 4,
    dxt5_normal_map = 5,
};

/// The numbers of the published DXGI_FORMAT enumeration, as far as a conversion may choose or route them.
enum class DXGI_CHOICE : std::uint32_t {
    none = 0,
    r8g8b8a8_unorm_srgb = 29,
    bc1_unorm_srgb = 72,
    bc2_unorm_srgb = 75,
    bc3_unorm_srgb = 78,
    bc5_unorm = 83,
    bc5_snorm = 84,
    bc6h_uf16 = 95,
    bc6h_sf16 = 96,
    bc7_unorm = 98,
    bc7_unorm_srgb = 99,
};

struct COMPRESSION_FORMAT {
    NVTT_FORMAT nvtt = NVTT_FORMAT::dxt5;
    DXGI_CHOICE dxgi = DXGI_CHOICE::none;
    bool uncompressed_with_alpha = false;
    QString l8_name;  ///< "l8" for that format, else empty
};

/// Whether every alpha of the top level is 255. Only the "dxt1_or_…" names depend on it: for every other name the
/// answer is true without a look at the texels. `image` has four 8-bit channels, alpha last.
bool is_fully_opaque(QString const& format_name, IMAGE_LOADER::IMAGE const& image);

/// Nothing for a name that is not known. Names are lower case.
std::optional<COMPRESSION_FORMAT> select_compression_format(QString const& format_name, bool opaque,
                                                            bool need_gamma_correction);

/// Whether the D3D back-end writes this format. It does not take `r8g8b8a8_unorm_srgb`: gamma-corrected "rgb" and
/// "rgba" go to the rule's compressor with the preset nvtt format and come out as DXT5. That is deliberate.
bool is_routed_to_d3d(DXGI_CHOICE format);
