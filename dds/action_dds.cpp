#include "dds/action_dds.hpp"

#include "dds/conversion_name.hpp"
#include "dds/tool_data_library.hpp"
#include "platform/tool_data_builder/texture_compressor.hpp"

#include <QFile>

namespace {

constexpr int progress_maximum = 1000;

}  // namespace

ACTION_DDS::ACTION_DDS(PHYSICAL_PATH const& source, PROCESSOR_INTERFACE& processor, bool forbid_dxt1)
    : ACTION_CONVERT(source, processor),
      forbid_dxt1_(forbid_dxt1) {
    set_progress_max(progress_maximum);
    set_target_extension(QStringLiteral(".dds"));
}

QString ACTION_DDS::get_name(bool detailed) {
    return conversion_name(logical_source(), detailed);
}

bool ACTION_DDS::convert(PHYSICAL_PATH const& source, PHYSICAL_PATH const& target, RULE_CACHE const&, FILE_MAP const&) {
    receive_tool_data_messages(*this);
    QString const work_file = source.left(source.text().size() - 3) + QStringLiteral("dds");
    QFile::remove(work_file);
    TOOLDATABUILDER::TEXTURE_COMPRESSOR compressor{QE::UniString()};
    bool converted = compressor.process_tga(QE::UniString(), nullptr, wide(source), false, true, forbid_dxt1_);
    if (converted) {
        QFile::remove(target);
        converted = QFile::rename(work_file, target);
    }
    QFile::remove(work_file);
    return converted;
}
