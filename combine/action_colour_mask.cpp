#include "combine/action_colour_mask.hpp"

#include "dds/target_files.hpp"
#include "dds/tool_data_library.hpp"
#include "platform/tool_data_builder/texture_compressor.hpp"
#include "processor/host/paths.hpp"

namespace {

constexpr int progress_maximum = 1000;

}  // namespace

ACTION_COLOUR_MASK::ACTION_COLOUR_MASK(PHYSICAL_PATH const& stem, bool numbered, PROCESSOR_INTERFACE& processor)
    : STEM_ACTION(stem, processor, QLatin1String("Convert colormask"),
                  {{mask_suffixes(numbered)[0]},
                   {mask_suffixes(numbered)[1], true},
                   {mask_suffixes(numbered)[2], true},
                   {mask_suffixes(numbered)[3], true}}),
      numbered_(numbered) {
    set_target_filename(mask_target_name(stem, numbered));
    set_progress_max(progress_maximum);
}

bool ACTION_COLOUR_MASK::make_target(FILE_MAP const& files, RULE_CACHE const&) {
    receive_tool_data_messages(*this);
    remove_target(get_target());
    QString const stem = PATHS::physical_path(logical_source());
    create_target_folder();
    auto const path = [&](std::size_t position) {
        return wide(stem + mask_suffixes(numbered_)[position]);
    };
    QE::UniString const target = wide(get_target());
    TOOLDATABUILDER::TEXTURE_COMPRESSOR compressor{QE::UniString()};
    if (files.contains(logical_path_of(mask_suffixes(numbered_)[3])))
        compressor.compress_to_dxt5_optional(path(0), path(1), path(2), path(3), target);
    else
        compressor.compress_to_dxt1_optional(path(0), path(1), path(2), target);
    return true;
}
