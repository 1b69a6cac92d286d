#include "processor/action_texture_array.hpp"

#include "processor/host/asset_graph.hpp"
#include "processor/host/paths.hpp"
#include "processor/texture_names.hpp"

#include <QBuffer>
#include <QFile>

#include <exception>
#include <new>
#include <set>

namespace {

QString stem_of(PHYSICAL_PATH const& source) {
    return source.section(QLatin1Char('.'), 0, -2);
}

}  // namespace

ACTION_TEXTURE_ARRAY::ACTION_TEXTURE_ARRAY(PHYSICAL_PATH const& source, PROCESSOR_INTERFACE& processor)
    : ACTION_INTERFACE(processor),
      source_(source) {
}

ACTION_TEXTURE_ARRAY::~ACTION_TEXTURE_ARRAY() = default;

void ACTION_TEXTURE_ARRAY::abort() {
}

QString ACTION_TEXTURE_ARRAY::get_name(bool detailed) {
    QString const name = QStringLiteral("Asset Graph");
    return detailed ? name + QStringLiteral(" (") + source_.section(QLatin1Char('/'), -1) + QLatin1Char(')') : name;
}

PHYSICAL_PATH ACTION_TEXTURE_ARRAY::legacy_fragment() const {
    return PHYSICAL_PATH(stem_of(source_) + QStringLiteral(".agf"));
}

PHYSICAL_PATH ACTION_TEXTURE_ARRAY::fragment() const {
    return PHYSICAL_PATH(stem_of(source_) + QStringLiteral(".texture_array.agf"));
}

bool ACTION_TEXTURE_ARRAY::has_legacy_fragment(FILE_MAP const& files) const {
    PHYSICAL_PATH const texture(stem_of(source_) + QStringLiteral(".dds"));
    return files.contains(PATHS::logical_path(legacy_fragment())) && !files.contains(PATHS::logical_path(texture));
}

void ACTION_TEXTURE_ARRAY::get_affected_files(QVector<LOGICAL_PATH>& sources, QVector<TARGET_FILE>& targets, QDateTime&,
                                              FILE_MAP const& files, RULE_CACHE const&) {
    sources.append(PATHS::logical_path(source_));
    if (PHYSICAL_PATH const legacy = legacy_fragment(); has_legacy_fragment(files)) {
        removes_legacy_fragment_ = true;
        // Temporary: it is gone when the action has succeeded.
        targets.append({legacy, PATHS::logical_path(legacy), true});
    }
    targets.append({fragment(), PATHS::logical_path(fragment()), false});
}

ACTION_INTERFACE::STATUS ACTION_TEXTURE_ARRAY::run(FILE_MAP const& files, RULE_CACHE const& rules) {
    if (!error().isEmpty()) {
        add_output_line(error());
        return STATUS_FAILED;
    }
    try {
        // Asked once more where the host notes questions, so that another answer makes the action run again.
        static_cast<void>(has_legacy_fragment(files));
        return write_fragment(files, rules);
    } catch (std::bad_alloc const&) {
        add_output_line(QStringLiteral("Not enough memory"));
        return STATUS_FAILED;
    } catch (std::exception const& exception) {
        add_output_line(QStringLiteral("Failed to read file: %1: %2")
                            .arg(source_.text(), QString::fromLocal8Bit(exception.what())));
        return STATUS_FAILED;
    }
}

ACTION_INTERFACE::STATUS ACTION_TEXTURE_ARRAY::write_fragment(FILE_MAP const& files, RULE_CACHE const& rules) {
    QString const name = PATHS::logical_path(source_).section(QLatin1Char('/'), 1, -1);
    QTSHARED::ASSET_FRAGMENT_BUILDER builder(fragment().text());
    builder.add_fragment(name, source_.text(), QString());
    QFile list(source_.text());
    if (!list.open(QIODevice::ReadOnly | QIODevice::Text)) {
        add_output_line(QStringLiteral("Failed to open file: ") + source_.text());
        return STATUS_FAILED;
    }
    constexpr qint64 most_bytes = 16 << 20;
    QByteArray text = list.read(most_bytes + 1);
    if (list.error() != QFileDevice::NoError) {
        add_output_line(QStringLiteral("Failed to read file: %1: %2").arg(source_.text(), list.errorString()));
        return STATUS_FAILED;
    }
    if (text.size() > most_bytes) {
        add_output_line(QStringLiteral("Failed to read file: %1: it is larger than 16 MiB").arg(source_.text()));
        return STATUS_FAILED;
    }
    QBuffer lines(&text);
    lines.open(QIODevice::ReadOnly);
    std::set<QString> ids;
    for (QString const& texture : read_texture_names(lines)) {
        LOGICAL_PATH const dependency(QStringLiteral("<working>/") + texture + QStringLiteral(".dds"));
        QString const id = asset_fragment_id(dependency, rules);
        // Two names may be two spellings of one texture.
        if (!id.isEmpty() && ids.insert(id).second)
            builder.add_dependency(name, id, QStringLiteral("all"), QString());
    }
    if (!add_to_asset_graph_and_save(builder, files, rules))
        return STATUS_FAILED;
    if (removes_legacy_fragment_) {
        // Whether it is really gone is the host's to see: what the action was asked for stands.
        remove_from_perforce(legacy_fragment(), files);
        QFile::remove(legacy_fragment());
    }
    return STATUS_SUCCEEDED;
}
