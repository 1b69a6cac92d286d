#include "combine/action_material_map.hpp"

#include "combine/combine_mask_images.hpp"

namespace {

QLatin1String const smoothness("_smoothness.tga");
QLatin1String const metalness("_metalness.tga");
QLatin1String const faction_mask("_factionmask.tga");

}  // namespace

ACTION_MATERIAL_MAP::ACTION_MATERIAL_MAP(PHYSICAL_PATH const& stem, PROCESSOR_INTERFACE& processor)
    : STEM_ACTION(stem, processor, QLatin1String("Convert material map"),
                  {{smoothness}, {metalness, true}, {faction_mask, true}}) {
    set_target_extension(QStringLiteral("_material_map.dds"));
}

bool ACTION_MATERIAL_MAP::make_target(FILE_MAP const& files, RULE_CACHE const& rules) {
    QString const stem = physical_stem(files, smoothness);
    auto image = combine_mask_images_3(*this, PHYSICAL_PATH(stem + smoothness), PHYSICAL_PATH(stem + metalness),
                                       PHYSICAL_PATH(stem + faction_mask), true, true, false);
    if (!image) {
        add_output_line(QStringLiteral("Failed To Combine Files"));
        return false;
    }
    return compress_to_target(*image, rules, smoothness);
}
