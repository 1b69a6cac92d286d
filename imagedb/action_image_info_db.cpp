#include "imagedb/action_image_info_db.hpp"

#include "platform/image_loader/image_info_db.hpp"
#include "processor/host/asset_graph.hpp"
#include "processor/host/nr_xml_query_interface.hpp"
#include "processor/host/paths.hpp"

#include <QFile>

#include <algorithm>
#include <array>
#include <exception>
#include <new>
#include <span>

namespace {

using IMAGE_LOADER::IMAGE;
using IMAGE_LOADER::IMAGE_FORMAT;
using IMAGE_LOADER::IMAGE_INFO_DB;

constexpr int progress_maximum = 100000;

bool is_working_file(LOGICAL_PATH const& path) {
    return path.text().startsWith(QLatin1String("<working>/"));
}

bool is_listed(LOGICAL_PATH const& path) {
    return is_working_file(path) && path.text().endsWith(QLatin1String(".dds"));
}

/// Differs from what is listed on purpose: files from other systems may end in ".DDS".
bool is_read(LOGICAL_PATH const& path, PHYSICAL_PATH const& file) {
    return is_working_file(path) && file.text().endsWith(QLatin1String(".dds"), Qt::CaseInsensitive);
}

bool is_retail(RULE_CACHE const& rules) {
    QString const name = QStringLiteral("Retail");
    return rules.get_global(name).value(name).toBool();
}

QString in_working_root(QString const& name) {
    return PATHS::working_data().text() + QLatin1Char('/') + name;
}

/// The texture's header; not valid when the file cannot be read or is shorter than any header.
IMAGE read_header(PHYSICAL_PATH const& path) {
    QFile file(path.text());
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return {};
    std::array<std::uint8_t, IMAGE::longest_header> bytes;
    qint64 const count = file.read(reinterpret_cast<char*>(bytes.data()), static_cast<qint64>(bytes.size()));
    if (count < static_cast<qint64>(IMAGE::image_header_size(IMAGE_FORMAT::dds)))
        return {};
    return IMAGE::read_header(std::span(bytes).first(static_cast<std::size_t>(count)));
}

/// The path below the root, spelt as the file is.
QE::FileName database_name(PHYSICAL_PATH const& file) {
    QString const below_root = PATHS::logical_path(file).section(QLatin1Char('/'), 1, -1);
    return QE::FileName(file.right(below_root.size()).toLocal8Bit().toStdString());
}

}  // namespace

ACTION_IMAGE_INFO_DB::ACTION_IMAGE_INFO_DB(PROCESSOR_INTERFACE& processor, QString const& expansion)
    : ACTION_INTERFACE(processor),
      expansion_(expansion) {
    set_progress_max(progress_maximum);
}

ACTION_IMAGE_INFO_DB::~ACTION_IMAGE_INFO_DB() = default;

bool ACTION_IMAGE_INFO_DB::ignore_assert(QString const& message) const {
    constexpr std::array ignored = {"IMAGE_LOADER::IMAGE::get_surface_dimensions", "format != TTF_NUM_FORMATS",
                                    "undefined format"};
    return std::any_of(ignored.begin(), ignored.end(),
                       [&](char const* text) { return message.contains(QLatin1String(text)); }) ||
           ACTION_INTERFACE::ignore_assert(message);
}

QString ACTION_IMAGE_INFO_DB::get_name(bool detailed) {
    QString const name = QStringLiteral("Save image info database");
    return detailed && !expansion_.isEmpty()
               ? name + QStringLiteral(" for ") + expansion_ + QStringLiteral(" expansion")
               : name;
}

void ACTION_IMAGE_INFO_DB::get_affected_files(QVector<LOGICAL_PATH>& sources, QVector<TARGET_FILE>& targets, QDateTime&,
                                              FILE_MAP const& files, RULE_CACHE const& rules) {
    for (auto const& [path, entry] : files) {
        if (is_listed(path))
            sources.append(path);
    }
    PHYSICAL_PATH const database(in_working_root(database_base_name(rules) + QStringLiteral(".bin")));
    targets.append({database, PATHS::logical_path(database), false});
}

void ACTION_IMAGE_INFO_DB::add_external_dependencies(FILE_MAP const& files, RULE_CACHE const&) {
    for (auto const& [path, entry] : files) {
        if (is_listed(path) && entry != nullptr && entry->producers.size() == 1 && entry->producers[0] != nullptr)
            add_dependency(*entry->producers[0], false);
    }
}

QString ACTION_IMAGE_INFO_DB::database_base_name(RULE_CACHE const& rules) const {
    if (!is_retail(rules))
        return QStringLiteral("img_db");
    QString extension;
    QString const table = QStringLiteral("texc_expansions");
    if (!expansion_.isEmpty() && s_database != nullptr && s_database->has_table(table))
        extension = s_database->value(table, expansion_, QStringLiteral("pack_filename_extension"));
    return QStringLiteral("img_db__") + (extension.isEmpty() ? QStringLiteral("core") : extension);
}

bool ACTION_IMAGE_INFO_DB::belongs_here(LOGICAL_PATH const& path, RULE_CACHE const& rules) const {
    QString expansion;
    return is_file_ever_released(path, rules, &expansion, false) && expansion == expansion_;
}

ACTION_INTERFACE::STATUS ACTION_IMAGE_INFO_DB::run(FILE_MAP const& files, RULE_CACHE const& rules) {
    if (!error().isEmpty()) {
        add_output_line(error());
        return STATUS_FAILED;
    }
    try {
        try {
            record(files, rules);
        } catch (std::bad_alloc const&) {
            add_output_line(QStringLiteral("Not enough memory"));
        } catch (std::exception const& exception) {
            add_output_line(QStringLiteral("Unexpected error: ") + QString::fromLocal8Bit(exception.what()));
        }
    } catch (...) {
        // Not even the line found room, or it was no exception of the library's.
    }
    return STATUS_SUCCEEDED;
}

void ACTION_IMAGE_INFO_DB::record(FILE_MAP const& files, RULE_CACHE const& rules) {
    // Asked for so that the host loads its table of packages; fragments are referenced by it below.
    AGF_DEPENDENCY_BUILDER::get_asset_fragment_packages(s_database, s_asset_graph);
    IMAGE_INFO_DB::destroy();
    bool added = false;
    int done = 0;
    for (auto const& [path, entry] : files) {
        set_progress_value(static_cast<int>(qint64{done++} * progress_maximum / files.size()));
        if (entry == nullptr || !is_read(path, entry->physical_path) || !belongs_here(path, rules))
            continue;
        IMAGE const image = read_header(entry->physical_path);
        if (!image.valid())
            continue;
        added = true;
        IMAGE_INFO_DB::inst().add_info(database_name(entry->physical_path), image.get_image_info(), 0);
    }
    set_progress_value(progress_maximum);

    QString const base_name = database_base_name(rules);
    QString const database = in_working_root(base_name + QStringLiteral(".bin"));
    if (!added) {
        QFile::remove(database);
        return;
    }
    if (is_retail(rules) && s_asset_graph != nullptr) {
        QTSHARED::ASSET_FRAGMENT_BUILDER builder(in_working_root(base_name + QStringLiteral(".agf")));
        builder.add_fragment(base_name, database, expansion_);
        QString error;
        if (!s_asset_graph->add(builder, error))
            add_output_line(error);
        AGF_DEPENDENCY_BUILDER::add_referenced_fragment(base_name, expansion_, s_database, s_asset_graph);
    }
    std::string cause;
    if (!IMAGE_INFO_DB::inst().save(QE::UniString(database.toStdWString()), cause))
        add_output_line(
            QStringLiteral("Failed to write '%1': %2").arg(database, QString::fromLocal8Bit(cause.c_str())));
    else
        add_to_perforce(PHYSICAL_PATH(database), files, false, {});
}
