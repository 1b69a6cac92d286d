#include "dds/action_dds.hpp"

#include "dds/conversion_name.hpp"
#include "dds/tool_data_library.hpp"
#include "platform/image_loader/load_image_file.hpp"
#include "platform/qe/replace_file.hpp"
#include "platform/tool_data_builder/texture_compressor.hpp"

#include <QFile>

#include <filesystem>
#include <string>
#include <system_error>

namespace {

constexpr int progress_maximum = 1000;

/// Takes the place of `target`, also on another file system, and there whole or not at all: a plain copy does not
/// notice a disk that is full. A file that could not be moved away stays.
bool move_file(QString const& file, QString const& target) {
    std::filesystem::path const from = QFile::encodeName(file).toStdString();
    std::filesystem::path const to = QFile::encodeName(target).toStdString();
    std::error_code error;
    std::filesystem::rename(from, to, error);
    if (error != std::errc::cross_device_link)
        return !error;
    std::string cause;
    auto const bytes = IMAGE_LOADER::read_whole_file(from, cause);
    return bytes && QE::replace_file(to, *bytes, cause);
}

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
    announce_working_file(PHYSICAL_PATH(work_file));
    QFile::remove(work_file);
    TOOLDATABUILDER::TEXTURE_COMPRESSOR compressor{QE::UniString()};
    bool converted = compressor.process_tga(QE::UniString(), nullptr, wide(source), false, true, forbid_dxt1_);
    if (converted) {
        // It is there: the host learns which file it is.
        announce_working_file(PHYSICAL_PATH(work_file));
        QFile::remove(target);
        converted = move_file(work_file, target);
    }
    QFile::remove(work_file);
    return converted;
}
