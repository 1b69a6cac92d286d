#include "combine/action_gloss_map.hpp"

#include "combine/combine_mask_images.hpp"

namespace {

QLatin1String const gloss("_gloss.tga");
QLatin1String const faction_mask("_factionmask.tga");

}  // namespace

ACTION_GLOSS_MAP::ACTION_GLOSS_MAP(PHYSICAL_PATH const& stem, PROCESSOR_INTERFACE& processor)
    : STEM_ACTION(stem, processor, QLatin1String("Convert gloss map"), {{gloss}, {faction_mask, true}}) {
    set_target_extension(QStringLiteral("_gloss_map.dds"));
}

bool ACTION_GLOSS_MAP::make_target(FILE_MAP const& files, RULE_CACHE const& rules) {
    QString const stem = physical_stem(files, gloss);
    auto image = combine_mask_images_3(*this, PHYSICAL_PATH(stem + gloss), PHYSICAL_PATH(),
                                       PHYSICAL_PATH(stem + faction_mask), true, false, false);
    if (!image) {
        add_output_line(QStringLiteral("Failed To Combine Files"));
        return false;
    }
    return compress_to_target(*image, rules, gloss);
}
