#include "combine/action_levelled_gloss_map.hpp"

#include "dds/target_files.hpp"
#include "dds/tool_data_library.hpp"
#include "platform/tool_data_builder/texture_compressor.hpp"

namespace {

QLatin1String const gloss("_gloss.tga");
QLatin1String const level("_level.tga");
QLatin1String const faction_mask("_factionmask.tga");

}  // namespace

ACTION_LEVELLED_GLOSS_MAP::ACTION_LEVELLED_GLOSS_MAP(PHYSICAL_PATH const& stem, PROCESSOR_INTERFACE& processor)
    : STEM_ACTION(stem, processor, QLatin1String("Convert gloss map"), {{gloss}, {level, true}, {faction_mask, true}}) {
    set_target_extension(QStringLiteral("_gloss_map.dds"));
}

bool ACTION_LEVELLED_GLOSS_MAP::make_target(FILE_MAP const& files, RULE_CACHE const&) {
    receive_tool_data_messages(*this);
    remove_target(get_target());
    QString const stem = physical_stem(files, gloss);
    create_target_folder();
    TOOLDATABUILDER::TEXTURE_COMPRESSOR compressor{QE::UniString()};
    compressor.compress_to_dxt1(wide(stem + gloss), wide(stem + level), wide(stem + faction_mask), wide(get_target()),
                                false);
    return true;
}
