#include "combine/action_billboard.hpp"

#include "combine/combine_mask_images.hpp"

#include <limits>

namespace {

QLatin1String const normal("_normal.tga");
QLatin1String const displacement("_displacement.tga");

TEXTURE_RULES billboard_settings() {
    TEXTURE_RULES settings;
    settings.compressor = COMPRESSOR_TYPE::ATI;
    settings.mipmaps = true;
    settings.normal_map = true;
    settings.compression_format = QStringLiteral("dxt5");
    settings.average_grey = 0;
    settings.min_alpha = 0;
    settings.max_alpha = 0;
    settings.mip_filter = QStringLiteral("unused");
    settings.max_size = std::numeric_limits<std::int32_t>::max();
    return settings;
}

}  // namespace

ACTION_BILLBOARD::ACTION_BILLBOARD(PHYSICAL_PATH const& stem, PROCESSOR_INTERFACE& processor)
    : STEM_ACTION(stem, processor, QLatin1String("Convert billboard"), {{normal}, {displacement}}) {
    set_target_extension(QStringLiteral("_normal_and_displacement.dds"));
}

bool ACTION_BILLBOARD::make_target(FILE_MAP const& files, RULE_CACHE const&) {
    QString const stem = physical_stem(files, normal);
    PHYSICAL_PATH const normal_map(stem + normal);
    auto image =
        combine_mask_images_4(*this, normal_map, normal_map, normal_map, PHYSICAL_PATH(stem + displacement), true);
    if (!image) {
        add_output_line(QStringLiteral("Failed To Combine Files"));
        return false;
    }
    compress_to_target(*image, billboard_settings());
    return true;
}
