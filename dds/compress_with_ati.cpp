#include "dds/compress_with_ati.hpp"

#include "platform/dds_container/legacy_format.hpp"
#include "platform/tool_data_builder/amd_compressor.hpp"

#include <QFile>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace {

using dds_container::four_cc_number;
using IMAGE_LOADER::IMAGE;
using TOOLDATABUILDER::AMD_TC_FORMAT;

/// What the library is told for a format; the last two are words of the DDS header.
struct LIBRARY_FORMAT {
    NVTT_FORMAT format;
    AMD_TC_FORMAT library;
    std::uint32_t pixel_format_flags;
    std::uint32_t four_cc;
};

constexpr std::uint32_t four_cc_flag = dds_container::LEGACY_PIXEL_FORMAT::four_cc_flag;
constexpr std::uint32_t rgb_flag = dds_container::LEGACY_PIXEL_FORMAT::rgb_flag;
constexpr std::uint32_t alpha_pixels_flag = dds_container::LEGACY_PIXEL_FORMAT::alpha_pixels_flag;

constexpr auto library_formats = std::to_array<LIBRARY_FORMAT>({
    {NVTT_FORMAT::uncompressed, AMD_TC_FORMAT::argb_8888, rgb_flag, 0},
    {NVTT_FORMAT::dxt1, AMD_TC_FORMAT::dxt1, four_cc_flag, four_cc_number("DXT1")},
    {NVTT_FORMAT::dxt1_one_bit_alpha, AMD_TC_FORMAT::dxt1, four_cc_flag, four_cc_number("DXT1")},
    {NVTT_FORMAT::dxt3, AMD_TC_FORMAT::dxt3, four_cc_flag, four_cc_number("DXT3")},
    {NVTT_FORMAT::dxt5, AMD_TC_FORMAT::dxt5, four_cc_flag, four_cc_number("DXT5")},
    {NVTT_FORMAT::dxt5_normal_map, AMD_TC_FORMAT::dxt5_xgxr, four_cc_flag, four_cc_number("DXT5")},
});

QE::IMAGE32 copy_level(IMAGE const& image, std::uint32_t level) {
    QE::IMAGE32 copy(image.level_width(level), image.level_height(level));
    std::size_t const row_bytes = std::size_t{4} * copy.width;
    std::size_t const row_pitch = image.get_image_info().surfaces[level].row_pitch;
    for (std::uint32_t y = 0; y < copy.height; ++y)
        std::copy_n(image.level(level).data() + y * row_pitch, row_bytes, copy.pixels.data() + y * row_bytes);
    return copy;
}

/// What DXT5 for normal maps holds: x in alpha, y in green.
void swizzle_normals(QE::IMAGE32& image) {
    for (std::size_t at = 0; at < image.pixels.size(); at += 4) {
        image.pixels[at + 3] = image.pixels[at + 2];
        image.pixels[at + 2] = 255;
        image.pixels[at] = 0;
    }
}

TOOLDATABUILDER::AMD_TC_CompressOptions library_options(BACK_END_SETTINGS const& settings) {
    TOOLDATABUILDER::AMD_TC_CompressOptions options;
    options.size = 2000;
    options.one_bit_alpha = settings.format == NVTT_FORMAT::dxt1_one_bit_alpha;
    options.alpha_threshold = 128;
    options.fast = settings.fastest_quality;
    options.linear_light_levels =
        settings.need_gamma_correction && !settings.normal_map && settings.format != NVTT_FORMAT::dxt5_normal_map;
    return options;
}

}  // namespace

bool compress_with_ati(OUTPUT_LINE_SINK& sink, PHYSICAL_PATH const& target, BACK_END_SETTINGS const& settings,
                       IMAGE const& image, std::vector<IMAGE> const& /*chain*/) {
    if (!settings.mipmaps) {
        sink.add_output_line(QStringLiteral("ATI compressor does not support not generating mipmaps"));
        return false;
    }
    auto const row = std::find_if(library_formats.begin(), library_formats.end(),
                                  [&](LIBRARY_FORMAT const& candidate) { return candidate.format == settings.format; });
    if (row == library_formats.end()) {
        sink.add_output_line(
            QStringLiteral("ATI compressor does not support %1 output format!").arg(settings.format_name));
        return false;
    }
    bool const with_alpha = settings.format == NVTT_FORMAT::uncompressed && settings.uncompressed_with_alpha;
    std::uint32_t const flags = row->pixel_format_flags | (with_alpha ? alpha_pixels_flag : 0);
    TOOLDATABUILDER::AMD_TC_CompressOptions const options = library_options(settings);

    std::string cause;
    bool written = false;
    if (image.number_of_mips() >= 2) {
        std::vector<QE::IMAGE32> levels;
        for (std::uint32_t level = 0; level < image.number_of_mips(); ++level)
            levels.push_back(copy_level(image, level));
        QE::String const path(QFile::encodeName(target).toStdString());
        written = TOOLDATABUILDER::write_dds_AMD_compressor(path, levels, row->library, flags, row->four_cc, options,
                                                            true, cause);
    } else {
        QE::IMAGE32 top = copy_level(image, 0);
        AMD_TC_FORMAT library_format = row->library;
        if (settings.format == NVTT_FORMAT::dxt5_normal_map) {
            // The single-image form is not trusted with the swizzle: it gets texels that are ready for plain DXT5.
            swizzle_normals(top);
            library_format = AMD_TC_FORMAT::dxt5;
        }
        written = TOOLDATABUILDER::write_dds_AMD_compressor(QE::UniString(target.text().toStdWString()), top,
                                                            library_format, flags, row->four_cc, options, cause);
    }
    if (!written)
        sink.add_output_line(QStringLiteral("Failed to write the texture: ") + QString::fromLocal8Bit(cause.c_str()));
    return written;
}
