#include "dds/compress_image.hpp"

#include "dds/channel_steps.hpp"
#include "dds/compress_with_ati.hpp"
#include "dds/compress_with_d3d.hpp"
#include "dds/compress_with_nvtt.hpp"
#include "dds/compression_format.hpp"
#include "dds/one_bit_alpha_chain.hpp"
#include "dds/reduce_image.hpp"
#include "dds/working_image.hpp"
#include "platform/image_loader/convert.hpp"

#include <string>
#include <vector>

namespace {

using IMAGE_LOADER::IMAGE;

constexpr float output_gamma = 2.2F;

bool are_sides_allowed(QString const& format_name, IMAGE const& image) {
    return !format_name.contains(QLatin1String("dxt")) || (image.width() % 4 == 0 && image.height() % 4 == 0);
}

/// All levels of `source` in four 8-bit channels; not valid when one cannot be converted.
IMAGE make_working_copy(IMAGE const& source, bool is_png) {
    IMAGE copy = make_working_image(source.width(), source.height(), source.number_of_mips(),
                                    is_png ? IMAGE_LOADER::TTF_R8G8B8A8 : IMAGE_LOADER::TTF_B8G8R8A8);
    std::string cause;
    for (std::uint32_t level = 0; level < copy.number_of_mips(); ++level) {
        if (!IMAGE_LOADER::convert(source, level, copy, level, cause))
            return IMAGE::failed(cause);
    }
    return copy;
}

}  // namespace

bool compress_image(OUTPUT_LINE_SINK& sink, TEXTURE_RULES const& rules, bool is_png, IMAGE& source,
                    PHYSICAL_PATH const& target) {
    if (!are_sides_allowed(rules.compression_format, source)) {
        sink.add_output_line(QStringLiteral("Texture dimensions are invalid; Must be multiple of 4!!!"));
        return false;
    }
    if (!reduce_image(sink, source, rules.drop_mips, static_cast<std::uint32_t>(rules.max_size),
                      rules.need_gamma_correction, output_gamma))
        return false;

    IMAGE working = make_working_copy(source, is_png);
    if (!working.valid()) {
        sink.add_output_line(QStringLiteral("Failed to convert image to the required pixel format!"));
        return false;
    }
    bool const opaque = is_fully_opaque(rules.compression_format, working);
    if (rules.premultiplied_alpha)
        premultiply_alpha(working, rules.need_gamma_correction);
    if (rules.parallax_map)
        shuffle_parallax_channels(working);

    auto const format = select_compression_format(rules.compression_format, opaque, rules.need_gamma_correction);
    if (!format) {
        sink.add_output_line(QStringLiteral("Compression Format Unrecognised!"));
        return false;
    }
    std::vector<IMAGE> chain;
    if (format->nvtt == NVTT_FORMAT::dxt1_one_bit_alpha && working.number_of_mips() == 1 && !opaque &&
        rules.use_hq_one_bit_alpha)
        chain = make_one_bit_alpha_chain(working, rules.need_gamma_correction);

    if (is_routed_to_d3d(format->dxgi))
        return compress_with_d3d(sink, target, format->dxgi, working, rules.need_gamma_correction, false);
    BACK_END_SETTINGS settings;
    settings.format = format->nvtt;
    settings.format_name = rules.compression_format;
    settings.uncompressed_with_alpha = format->uncompressed_with_alpha;
    settings.normal_map = rules.normal_map;
    settings.mipmaps = rules.mipmaps;
    settings.need_gamma_correction = rules.need_gamma_correction;
    settings.output_gamma = output_gamma;
    settings.mip_filter = rules.mip_filter;
    settings.fastest_quality = rules.fastest_quality;
    settings.l8_name = format->l8_name;
    if (rules.compressor == COMPRESSOR_TYPE::ATI)
        return compress_with_ati(sink, target, settings, working, chain);
    return compress_with_nvtt(sink, target, settings, working, chain);
}
