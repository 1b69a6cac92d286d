#include "combine/action_levelled_material_map.hpp"

#include "dds/target_files.hpp"
#include "dds/tool_data_library.hpp"
#include "platform/tool_data_builder/texture_compressor.hpp"

namespace {

QLatin1String const smoothness("_smoothness.tga");
QLatin1String const metalness("_metalness.tga");
QLatin1String const faction_mask("_factionmask.tga");

}  // namespace

ACTION_LEVELLED_MATERIAL_MAP::ACTION_LEVELLED_MATERIAL_MAP(PHYSICAL_PATH const& stem, PROCESSOR_INTERFACE& processor)
    : STEM_ACTION(stem, processor, QLatin1String("Create material map"),
                  {{smoothness}, {metalness, true}, {faction_mask, true}}) {
    set_target_extension(QStringLiteral("_material_map.dds"));
}

bool ACTION_LEVELLED_MATERIAL_MAP::make_target(FILE_MAP const& files, RULE_CACHE const&) {
    receive_tool_data_messages(*this);
    remove_target(get_target());
    QString const stem = physical_stem(files, smoothness);
    create_target_folder();
    TOOLDATABUILDER::TEXTURE_COMPRESSOR compressor{QE::UniString()};
    compressor.compress_to_optimal(wide(stem + smoothness), wide(stem + metalness), QE::UniString(),
                                   wide(stem + faction_mask), wide(get_target()));
    return true;
}
