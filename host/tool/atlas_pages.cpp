#include "host/tool/atlas_pages.hpp"

#include "processor/host/paths.hpp"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <set>

namespace tool {

namespace {

struct ATLAS {
    /// Of the pages' paths, what stands before the number.
    QString base;
    QString index;
};

std::optional<ATLAS> atlas_of(PLANNED_ACTION const& planned) {
    QLatin1String const extension(".tai");
    if (planned.state == PLANNED_ACTION::STATE::error)
        return {};
    for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets) {
        QString const index = QDir::cleanPath(target.physical_path);
        if (!target.temporary && index.endsWith(extension))
            return ATLAS{index.chopped(extension.size()), index};
    }
    return {};
}

bool stands_there(QString const& file) {
    QFileInfo const info(file);
    return info.exists() || info.isSymLink();
}

QString page_end(int number) {
    return QString::number(number) + QLatin1String(".dds");
}

/// What may follow the base of an atlas that is going to run. It has no more pages than sources, and what stands behind
/// the last page, without a gap, passes for the page of an earlier, larger atlas.
std::vector<QString> page_ends(PLANNED_ACTION const& planned, QString const& base) {
    std::vector<QString> ends;
    for (char const* const extension : {".dds", ".tga"}) {
        bool is_unbroken = true;
        for (int number = 0; number <= planned.sources.size() || is_unbroken; ++number) {
            ends.push_back(QString::number(number) + QLatin1String(extension));
            is_unbroken = is_unbroken && stands_there(base + ends.back());
        }
    }
    return ends;
}

/// The numbers of the pages that an index names.
QSet<int> pages_of_index(QString const& index) {
    QSet<int> pages;
    QFile file(index);
    if (!QFileInfo(index).isFile() || !file.open(QIODevice::ReadOnly))
        return pages;
    while (!file.atEnd()) {
        // NAME, two tabs, PAGE, NUMBER, ... of which names may hold commas and blanks.
        constexpr int fields_behind_number = 6;
        constexpr qint64 longest_line = 1 << 16;
        QByteArray const line = file.readLine(longest_line);
        QList<QByteArray> const fields = line.split(',');
        bool is_number = false;
        int const page = fields.value(fields.size() - fields_behind_number - 1).trimmed().toInt(&is_number);
        if (is_number && page >= 0 && !line.startsWith('#'))
            pages.insert(page);
    }
    return pages;
}

}  // namespace

std::vector<SHARED_PAGE> shared_pages(std::vector<PLANNED_ACTION> const& actions,
                                      QHash<QString, std::size_t> const& producers, TARGET_GUARD& guard) {
    std::vector<SHARED_PAGE> shared;
    std::set<std::pair<std::size_t, std::size_t>> told;
    QHash<QString, std::size_t> pages;
    for (std::size_t i = 0; i < actions.size(); ++i) {
        std::optional<ATLAS> const atlas = atlas_of(actions[i]);
        if (!atlas)
            continue;
        QString const place = guard.place(atlas->base);
        for (QString const& end : page_ends(actions[i], atlas->base)) {
            QString const page = place + end;
            std::size_t const maker = producers.value(page, i);
            std::size_t const other = maker != i ? maker : pages.value(page, i);
            if (other != i && told.insert(std::minmax(i, other)).second)
                shared.push_back({atlas->base + end, i, other});
            pages.insert(page, i);
        }
    }
    return shared;
}

QString take_out_foreign_pages(PLANNED_ACTION& planned, BUILD_STATE& state) {
    QString refusal;
    std::optional<ATLAS> const atlas = atlas_of(planned);
    if (!atlas)
        return refusal;
    QSet<QString> own;
    for (int const number : pages_of_index(atlas->index))
        own.insert(page_end(number));
    for (QString const& end : page_ends(planned, atlas->base)) {
        QString const file = atlas->base + end;
        LOGICAL_PATH const path = PATHS::logical_path(PHYSICAL_PATH(file));
        // The state may be gone, or may never have been on this machine; the index tells as well.
        if (!stands_there(file) || own.contains(end) || state.is_made_by_build(planned, path))
            continue;
        if (refusal.isEmpty())
            refusal = QStringLiteral("%1 is no file of the atlas %2, but has the name of one of its pages; move it "
                                     "away, or give the atlas another name")
                          .arg(CONSOLE::shown(file), CONSOLE::shown(atlas->index));
        planned.targets.erase(std::remove_if(planned.targets.begin(), planned.targets.end(),
                                             [&](auto const& target) { return target.logical_path == path; }),
                              planned.targets.end());
    }
    return refusal;
}

QString missing_page(PLANNED_ACTION const& planned) {
    std::optional<ATLAS> const atlas = atlas_of(planned);
    QSet<int> const named = atlas ? pages_of_index(atlas->index) : QSet<int>();
    QList<int> pages(named.begin(), named.end());
    std::sort(pages.begin(), pages.end());
    for (int const number : pages)
        if (QString const page = atlas->base + page_end(number); !QFileInfo(page).isFile())
            return page;
    return {};
}

}  // namespace tool
