#include "processor/host/action_convert.hpp"

#include "host/framework/version_control.hpp"
#include "processor/host/paths.hpp"
#include "processor/host/working_file_refusal.hpp"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <exception>

namespace {

struct NAME_PARTS {
    QString base_name;
    QString extension;
};

/// Parts a file name before its extension. Only the extensions that source files have count: sources reach an action
/// also as stems ("rock.v2" for rock.v2_gloss.tga), whose dots are part of the name.
NAME_PARTS split_source_name(QString const& name) {
    static std::array<QLatin1String, 11> const extensions = {
        QLatin1String(".tga"), QLatin1String(".tif"),  QLatin1String(".tiff"), QLatin1String(".png"),
        QLatin1String(".jpg"), QLatin1String(".jpeg"), QLatin1String(".dds"),  QLatin1String(".fga"),
        QLatin1String(".bmp"), QLatin1String(".hdr"),  QLatin1String(".exr")};
    auto const found = std::find_if(extensions.begin(), extensions.end(), [&](QLatin1String extension) {
        return name.size() > extension.size() && name.endsWith(extension, Qt::CaseInsensitive);
    });
    if (found == extensions.end())
        return {name, {}};
    return {name.left(name.size() - found->size()), name.right(found->size())};
}

}  // namespace

ACTION_CONVERT::ACTION_CONVERT(PHYSICAL_PATH const& source, PROCESSOR_INTERFACE& processor)
    : ACTION_TDB(processor),
      source_(source),
      logical_source_(PATHS::logical_path(source)) {
    auto [base_name, extension] = split_source_name(source.section(QLatin1Char('/'), -1));
    target_base_name_ = std::move(base_name);
    target_extension_ = std::move(extension);
    QString const folder = logical_source_.section(QLatin1Char('/'), 1, -2);
    target_folder_ = PATHS::target_working_data(source).text();
    if (!folder.isEmpty())
        target_folder_ += QLatin1Char('/') + folder;
}

ACTION_CONVERT::ACTION_CONVERT(ACTION_CONVERT const& other)
    : ACTION_TDB(other),
      source_(other.source_),
      logical_source_(other.logical_source_),
      target_folder_(other.target_folder_),
      target_base_name_(other.target_base_name_),
      target_extension_(other.target_extension_) {
}

ACTION_CONVERT::~ACTION_CONVERT() = default;

void ACTION_CONVERT::set_target(PHYSICAL_PATH const& target) {
    set_target_path(PHYSICAL_PATH(target.section(QLatin1Char('/'), 0, -2)));
    auto [base_name, extension] = split_source_name(target.section(QLatin1Char('/'), -1));
    target_base_name_ = std::move(base_name);
    target_extension_ = std::move(extension);
}

void ACTION_CONVERT::set_target_path(PHYSICAL_PATH const& folder) {
    target_folder_ = folder;
    while (target_folder_.size() > 1 && target_folder_.endsWith(QLatin1Char('/')))
        target_folder_.chop(1);
}

void ACTION_CONVERT::set_target_base_name(QString const& base_name) {
    target_base_name_ = base_name;
}

void ACTION_CONVERT::set_target_filename(QString const& file_name) {
    int const dot = file_name.lastIndexOf(QLatin1Char('.'));
    target_base_name_ = file_name.left(dot);
    target_extension_ = dot < 0 ? QString() : file_name.mid(dot);
}

void ACTION_CONVERT::set_target_extension(QString const& extension) {
    target_extension_ = extension;
}

PHYSICAL_PATH ACTION_CONVERT::get_target() const {
    // A base name may hold folders.
    return PATHS::clean(PHYSICAL_PATH(target_folder_ + QLatin1Char('/') + target_base_name_ + target_extension_));
}

void ACTION_CONVERT::get_affected_files(QVector<LOGICAL_PATH>& sources, QVector<TARGET_FILE>& targets, QDateTime&,
                                        FILE_MAP const& files, RULE_CACHE const&) {
    // This host goes by contents: the time stamps of many thousand files would be asked for in vain.
    get_source_files(sources, files);
    PHYSICAL_PATH const target = get_target();
    targets.append({target, PATHS::logical_path(target), is_target_temporary()});
}

void ACTION_CONVERT::get_source_files(QVector<LOGICAL_PATH>& sources, FILE_MAP const&) {
    sources.append(logical_source_);
}

bool ACTION_CONVERT::is_target_temporary() {
    return false;
}

bool ACTION_CONVERT::is_target_binary() {
    return true;
}

bool ACTION_CONVERT::convert(PHYSICAL_PATH const&, PHYSICAL_PATH const&, RULE_CACHE const&, FILE_MAP const&) {
    return false;
}

ACTION_INTERFACE::STATUS ACTION_CONVERT::run(FILE_MAP const& files, RULE_CACHE const& rules) {
    if (!error().isEmpty()) {
        add_output_line(error());
        return STATUS_FAILED;
    }
    PHYSICAL_PATH const target = get_target();
    if (auto const refusal = framework::VERSION_CONTROL::current().prepare_write(target)) {
        add_output_line(*refusal);
        return STATUS_FAILED;
    }
    QString const folder = target.section(QLatin1Char('/'), 0, -2);
    if (!QDir().mkpath(folder)) {
        add_output_line(QStringLiteral("Failed to create the folder '%1'").arg(folder));
        return STATUS_FAILED;
    }
    QFile earlier(target.text());
    if ((earlier.exists() || QFileInfo(target.text()).isSymLink()) && !earlier.remove()) {
        add_output_line(
            QStringLiteral("Failed to remove the earlier target '%1': %2").arg(target.text(), earlier.errorString()));
        return STATUS_FAILED;
    }

    bool converted = false;
    try {
        converted = convert(source_, target, rules, files);
    } catch (std::bad_alloc const&) {
        add_output_line(QStringLiteral("Not enough memory"));
    } catch (WORKING_FILE_REFUSAL const& refusal) {
        add_output_line(QString::fromUtf8(refusal.what()));
    } catch (std::exception const& exception) {
        add_output_line(QStringLiteral("Unexpected error: %1").arg(QString::fromLocal8Bit(exception.what())));
    } catch (...) {
        add_output_line(QStringLiteral("Unexpected error"));
    }
    if (!converted) {
        QFile::remove(target);
        return STATUS_FAILED;
    }
    set_progress_value(progress_max());
    if (!QFileInfo(target.text()).isFile())
        return STATUS_SUCCEEDED;
    add_to_perforce(target, files, false, {});
    return version_control_failed() ? STATUS_FAILED : STATUS_SUCCEEDED;
}
