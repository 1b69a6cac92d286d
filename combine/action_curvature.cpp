#include "combine/action_curvature.hpp"

#include "combine/combine_mask_images.hpp"

namespace {

QLatin1String const curvature("_curvature.tga");
QLatin1String const translucency("_translucency.tga");

}  // namespace

ACTION_CURVATURE::ACTION_CURVATURE(PHYSICAL_PATH const& stem, PROCESSOR_INTERFACE& processor)
    : STEM_ACTION(stem, processor, QLatin1String("Convert curvature map"), {{curvature}, {translucency}}) {
    set_target_extension(QStringLiteral("_curvature_translucency.dds"));
}

bool ACTION_CURVATURE::make_target(FILE_MAP const& files, RULE_CACHE const& rules) {
    QString const stem = physical_stem(files, curvature);
    auto image = combine_mask_images_3(*this, PHYSICAL_PATH(stem + curvature), PHYSICAL_PATH(stem + translucency),
                                       PHYSICAL_PATH(), true, true, false);
    if (!image) {
        add_output_line(QStringLiteral("Failed To Combine Files"));
        return false;
    }
    return compress_to_target(*image, rules, curvature);
}
