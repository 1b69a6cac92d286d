#include "combine/stem_action.hpp"

#include "dds/compress_image.hpp"
#include "platform/image_loader/wrap_image32.hpp"
#include "processor/host/paths.hpp"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <exception>
#include <new>
#include <utility>

namespace {

/// Changes when the file is made, removed or written.
struct FILE_STATE {
    explicit FILE_STATE(QString const& path) {
        QFileInfo const info(path);
        exists = info.exists();
        size = info.size();
        modified = info.lastModified();
    }
    bool operator==(FILE_STATE const& other) const {
        return exists == other.exists && size == other.size && modified == other.modified;
    }

    bool exists = false;
    qint64 size = 0;
    QDateTime modified;
};

}  // namespace

STEM_ACTION::STEM_ACTION(PHYSICAL_PATH const& stem, PROCESSOR_INTERFACE& processor, QLatin1String name,
                         std::vector<STEM_SOURCE> sources)
    : ACTION_CONVERT(stem, processor),
      name_(name),
      sources_(std::move(sources)) {
    // A stem is a base name as a whole, also where it ends like an image file.
    set_target_base_name(stem.section(QLatin1Char('/'), -1));
}

QString STEM_ACTION::get_name(bool detailed) {
    if (!detailed)
        return name_;
    return name_ + QLatin1String(" (") + logical_source().section(QLatin1Char('/'), -1) + QLatin1Char(')');
}

void STEM_ACTION::get_source_files(QVector<LOGICAL_PATH>& sources, FILE_MAP const& files) {
    for (STEM_SOURCE const& source : sources_) {
        LOGICAL_PATH const path = logical_path_of(source.suffix);
        if (!source.is_optional || files.contains(path))
            sources.append(path);
    }
}

ACTION_INTERFACE::STATUS STEM_ACTION::run_with(std::function<bool()> const& make_target, FILE_MAP const& files) {
    if (!error().isEmpty()) {
        add_output_line(error());
        return STATUS_FAILED;
    }
    PHYSICAL_PATH const target = get_target();
    FILE_STATE const before(target);
    try {
        if (!make_target())
            return STATUS_FAILED;
    } catch (std::exception const& exception) {
        bool const is_memory = dynamic_cast<std::bad_alloc const*>(&exception) != nullptr;
        add_output_line(is_memory
                            ? QStringLiteral("Not enough memory")
                            : QStringLiteral("Unexpected error: %1").arg(QString::fromLocal8Bit(exception.what())));
        if (!(FILE_STATE(target) == before))
            QFile::remove(target);
        return STATUS_FAILED;
    } catch (...) {
        add_output_line(QStringLiteral("Unexpected error"));
        return STATUS_FAILED;
    }
    // A folder of that name is no target.
    if (!QFileInfo(target.text()).isFile()) {
        add_output_line(QStringLiteral("Failed to convert!"));
        return STATUS_FAILED;
    }
    add_to_perforce(target, files, false, {});
    if (version_control_failed())
        return STATUS_FAILED;
    set_progress_value(progress_max());
    add_output_line(QStringLiteral("Done."));
    return STATUS_SUCCEEDED;
}

LOGICAL_PATH STEM_ACTION::logical_path_of(QLatin1String suffix) const {
    return LOGICAL_PATH(logical_source().text() + suffix);
}

PHYSICAL_PATH STEM_ACTION::physical_stem(FILE_MAP const& files, QLatin1String suffix) const {
    LOGICAL_PATH const logical = logical_path_of(suffix);
    FILE_ENTRY const* const entry = files.value(logical);
    PHYSICAL_PATH const physical = entry != nullptr ? entry->physical_path : PATHS::physical_path(logical);
    return PHYSICAL_PATH(physical.left(physical.text().size() - suffix.size()));
}

void STEM_ACTION::create_target_folder() const {
    QDir().mkpath(get_target().section(QLatin1Char('/'), 0, -2));
}

void STEM_ACTION::compress_to_target(QE::IMAGE32& image, TEXTURE_RULES const& rules) {
    PHYSICAL_PATH const target = get_target();
    create_target_folder();
    FILE_STATE const before(target);
    IMAGE_LOADER::IMAGE wrapped = IMAGE_LOADER::wrap_image32(image);
    if (!compress_image(*this, rules, false, wrapped, target) && !(FILE_STATE(target) == before))
        QFile::remove(target);
}

bool STEM_ACTION::compress_to_target(QE::IMAGE32& image, RULE_CACHE const& rules, QLatin1String suffix) {
    TEXTURE_RULES record;
    if (!read_texture_rules(*this, rules, logical_path_of(suffix), record)) {
        add_output_line(QStringLiteral("Failed in gathering the rules"));
        return false;
    }
    compress_to_target(image, record);
    return true;
}
