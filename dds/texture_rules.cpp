#include "dds/texture_rules.hpp"

#include "dds/whole_number.hpp"

namespace {

// A property that is set counts as present even when its value cannot be converted: then it is false, 0 or empty.

bool read_bool(RULE const& rule, char const* property, bool otherwise) {
    QVariant const& value = rule.value(QLatin1String(property));
    return value.isValid() ? value.toBool() : otherwise;
}

std::int32_t read_integer(RULE const& rule, char const* property, std::int32_t otherwise) {
    QVariant const& value = rule.value(QLatin1String(property));
    return value.isValid() ? whole_number(value) : otherwise;
}

float read_float(RULE const& rule, char const* property, float otherwise) {
    QVariant const& value = rule.value(QLatin1String(property));
    return value.isValid() ? value.toFloat() : otherwise;
}

QString read_text(RULE const& rule, char const* property) {
    return rule.value(QLatin1String(property)).toString();
}

}  // namespace

COMPRESSOR_TYPE parse_compressor_type(OUTPUT_LINE_SINK& sink, QString const& name) {
    QString const lower = name.toLower();
    if (lower == QLatin1String("ati"))
        return COMPRESSOR_TYPE::ATI;
    if (lower.isEmpty() || lower == QLatin1String("nvidia"))
        return COMPRESSOR_TYPE::NVIDIA;
    sink.add_output_line(QStringLiteral("Unknown compressor type: ") + lower);
    return COMPRESSOR_TYPE::UNKNOWN;
}

bool read_texture_rules(OUTPUT_LINE_SINK& sink, RULE_CACHE const& rules, LOGICAL_PATH const& path,
                        TEXTURE_RULES& record) {
    RULE const rule = rules.get(path, QStringLiteral("Texture"));
    if (!rule.exists()) {
        // The rule is named "Texture"; people know this message with its "Texture2".
        sink.add_output_line(QStringLiteral("Failed to read Texture2 Rules !"));
        return false;
    }
    record.compressor = parse_compressor_type(sink, read_text(rule, "Compressor"));
    if (record.compressor == COMPRESSOR_TYPE::UNKNOWN)
        return false;

    TEXTURE_RULES const defaults;
    record.mipmaps = read_bool(rule, "mipmaps", defaults.mipmaps);
    record.normal_map = read_bool(rule, "NormalMap", defaults.normal_map);
    record.parallax_map = read_bool(rule, "ParallaxMap", defaults.parallax_map);
    record.compression_format = rule.value(QStringLiteral("CompressionFormat")).isValid()
                                    ? read_text(rule, "CompressionFormat").toLower()
                                    : defaults.compression_format;
    record.need_gamma_correction = read_bool(rule, "NeedGammaCorrection", defaults.need_gamma_correction);
    record.average_grey = read_float(rule, "AverageGrey", defaults.average_grey);
    record.min_alpha = read_integer(rule, "MinAlpha", defaults.min_alpha);
    record.max_alpha = read_integer(rule, "MaxAlpha", defaults.max_alpha);
    record.premultiplied_alpha = read_bool(rule, "PremultipliedAlpha", defaults.premultiplied_alpha);
    // One name is tested and another, with one m more, is read. Projects set both, so both names stay.
    record.mip_filter = rule.value(QStringLiteral("MipMapFilterType")).isValid()
                            ? read_text(rule, "MipmMapFilterType").toLower()
                            : defaults.mip_filter;
    record.use_hq_one_bit_alpha = read_bool(rule, "UseHighQualityOneBitAlphaFiltering", defaults.use_hq_one_bit_alpha);
    record.fastest_quality = read_bool(rule, "FastestCompressionQuality", defaults.fastest_quality);
    record.drop_mips = whole_number(rule.value(QStringLiteral("DropMips")));
    record.max_size = whole_number(rule.value(QStringLiteral("MaxSize")));
    if (record.max_size < 1)
        record.max_size = defaults.max_size;
    return true;
}
