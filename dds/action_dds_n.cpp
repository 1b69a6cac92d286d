#include "dds/action_dds_n.hpp"

#include "dds/compress_image.hpp"
#include "dds/conversion_name.hpp"
#include "dds/texture_rules.hpp"
#include "platform/image_loader/wrap_image32.hpp"
#include "platform/qe/load_tga.hpp"

#include <QFile>

#include <new>
#include <optional>
#include <string>
#include <utility>

namespace {

using IMAGE_LOADER::IMAGE;

constexpr int progress_maximum = 1000;

bool compress_tga(OUTPUT_LINE_SINK& sink, TEXTURE_RULES const& rules, PHYSICAL_PATH const& source,
                  PHYSICAL_PATH const& target) {
    std::string cause;
    std::optional<QE::IMAGE32> tga = QE::load_tga(QE::String(QFile::encodeName(source).toStdString()), cause);
    if (!tga || tga->pixels.empty()) {
        sink.add_output_line(QStringLiteral("Attempting to compress ") + source +
                             QStringLiteral(" but it does not exist !"));
        return false;
    }
    IMAGE image = IMAGE_LOADER::wrap_image32(*tga);
    return compress_image(sink, rules, false, image, target);
}

bool compress_other(OUTPUT_LINE_SINK& sink, TEXTURE_RULES const& rules, PHYSICAL_PATH const& source,
                    PHYSICAL_PATH const& target) {
    QFile file(source.text());
    if (!file.open(QIODevice::ReadOnly)) {
        sink.add_output_line(QStringLiteral("Failed to open '") + source + QStringLiteral("' for reading!"));
        return false;
    }
    QByteArray bytes = file.readAll();
    IMAGE image(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    bytes.clear();
    if (!image.valid()) {
        sink.add_output_line(QStringLiteral("Failed to load image from '") + source + QStringLiteral("'!"));
        return false;
    }
    bool const is_png = source.text().endsWith(QLatin1String(".png"), Qt::CaseInsensitive);
    return compress_image(sink, rules, is_png, image, target);
}

}  // namespace

ACTION_DDS_N::ACTION_DDS_N(PHYSICAL_PATH const& source, PROCESSOR_INTERFACE& processor)
    : ACTION_CONVERT(source, processor) {
    set_progress_max(progress_maximum);
    set_target_extension(QStringLiteral(".dds"));
}

ACTION_DDS_N::ACTION_DDS_N(PHYSICAL_PATH const& source, PROCESSOR_INTERFACE& processor, PHYSICAL_PATH const& target,
                           QString compressor_override, QString format_override, QString premultiplied_override)
    : ACTION_CONVERT(source, processor),
      compressor_override_(std::move(compressor_override)),
      format_override_(std::move(format_override)),
      premultiplied_override_(std::move(premultiplied_override)) {
    set_target(target);
    set_progress_max(progress_maximum);
    set_target_extension(QStringLiteral(".dds"));
}

QString ACTION_DDS_N::get_name(bool detailed) {
    return conversion_name(logical_source(), detailed);
}

bool ACTION_DDS_N::convert(PHYSICAL_PATH const& source, PHYSICAL_PATH const& target, RULE_CACHE const& rules,
                           FILE_MAP const&) {
    bool converted = false;
    try {
        converted = convert_source(source, target, rules);
    } catch (std::bad_alloc const&) {
        add_output_line(QStringLiteral("Not enough memory to convert '") + source + QLatin1Char('\''));
    }
    if (!converted)
        QFile::remove(target);
    return converted;
}

bool ACTION_DDS_N::convert_source(PHYSICAL_PATH const& source, PHYSICAL_PATH const& target,
                                  RULE_CACHE const& rule_cache) {
    TEXTURE_RULES rules;
    if (!read_texture_rules(*this, rule_cache, logical_source(), rules)) {
        add_output_line(QStringLiteral("Failed in gathering the rules"));
        return true;
    }
    if (!compressor_override_.isEmpty()) {
        COMPRESSOR_TYPE const compressor = parse_compressor_type(*this, compressor_override_);
        if (compressor != COMPRESSOR_TYPE::UNKNOWN)
            rules.compressor = compressor;
    }
    if (!format_override_.isEmpty())
        rules.compression_format = format_override_;
    if (!premultiplied_override_.isEmpty())
        rules.premultiplied_alpha = premultiplied_override_ == QLatin1String("true");

    bool const is_tga = source.text().endsWith(QLatin1String(".tga"), Qt::CaseInsensitive);
    return is_tga ? compress_tga(*this, rules, source, target) : compress_other(*this, rules, source, target);
}
