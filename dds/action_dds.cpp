#include "dds/action_dds.hpp"

#include "dds/conversion_name.hpp"
#include "dds/target_files.hpp"
#include "dds/tool_data_library.hpp"
#include "platform/tool_data_builder/texture_compressor.hpp"

#include <string>

namespace {

constexpr int progress_maximum = 1000;

/// Where the library puts the texture: beside the source.
PHYSICAL_PATH work_file_of(PHYSICAL_PATH const& source) {
    return PHYSICAL_PATH(source.left(source.text().size() - 3) + QStringLiteral("dds"));
}

}  // namespace

ACTION_DDS::ACTION_DDS(PHYSICAL_PATH const& source, PROCESSOR_INTERFACE& processor, bool forbid_dxt1)
    : ACTION_CONVERT(source, processor),
      forbid_dxt1_(forbid_dxt1) {
    set_progress_max(progress_maximum);
    set_target_extension(QStringLiteral(".dds"));
    need_working_file(work_file_of(source));
}

QString ACTION_DDS::get_name(bool detailed) {
    return conversion_name(logical_source(), detailed);
}

bool ACTION_DDS::convert(PHYSICAL_PATH const& source, PHYSICAL_PATH const& target, RULE_CACHE const&, FILE_MAP const&) {
    receive_tool_data_messages(*this);
    PHYSICAL_PATH const work_file = work_file_of(source);
    announce_working_file(work_file);
    remove_target(work_file);
    TOOLDATABUILDER::TEXTURE_COMPRESSOR compressor{QE::UniString()};
    // The library makes the whole file or none, and does not replace one that has turned up since: whatever stands
    // there after a failure is somebody else's.
    if (!compressor.process_tga(QE::UniString(), nullptr, wide(source), false, true, forbid_dxt1_))
        return false;
    // It is there: the host learns which file it is.
    announce_working_file(work_file);
    remove_target(target);
    std::string cause;
    if (QE::move_file(native_target(work_file), native_target(target), cause))
        return true;
    remove_target(work_file);
    return false;
}
