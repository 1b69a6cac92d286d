#include "host/tool/atlas_pages.hpp"

#include "atlas/device_limits.hpp"
#include "dds/whole_number.hpp"
#include "host/tool/memory_estimate.hpp"
#include "processor/host/paths.hpp"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <bit>
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

/// No atlas has more pages than this, whatever its sources look like.
int sources_of(PLANNED_ACTION const& planned) {
    return planned.sources.size();
}

/// No atlas has more pages than this, as its sources announce their sides, which are widened to powers of two. A source
/// gets a page of its own only where each cell of its size is taken on all pages before it. Cells of powers of two lie
/// within one another, so there a source takes no more room than one cell as wide as the widest and as high as the
/// highest source: every page but the last one holds as many sources as it has such cells.
int most_pages(PLANNED_ACTION const& planned, RULE_CACHE const& rules) {
    int const sources = sources_of(planned);
    if (sources == 0)
        return 0;
    RULE const rule = rules.get(planned.sources.first(), QStringLiteral("Atlas"));
    std::uint64_t widest = 1;
    std::uint64_t highest = 1;
    for (LOGICAL_PATH const& source : planned.sources) {
        std::optional<IMAGE_SIDES> const sides = announced_sides(PATHS::physical_path(source));
        if (!sides || sides->width == 0 || sides->height == 0 ||
            std::max(sides->width, sides->height) > max_texture_extent)
            return sources;
        widest = std::max(widest, std::bit_ceil(sides->width));
        highest = std::max(highest, std::bit_ceil(sides->height));
    }
    auto const cells = [&](char const* property, std::uint64_t side) {
        std::int32_t const page_side = whole_number(rule.value(QLatin1String(property)));
        return static_cast<std::uint64_t>(std::clamp(page_side, 0, max_texture_extent)) / side;
    };
    std::uint64_t const on_a_page = std::max<std::uint64_t>(cells("Width", widest) * cells("Height", highest), 1);
    return static_cast<int>((static_cast<std::uint64_t>(sources) + on_a_page - 1) / on_a_page);
}

/// What may follow the base of an atlas that is going to run. What stands behind the last page, without a gap, passes
/// for the page of an earlier, larger atlas.
std::vector<QString> page_ends(QString const& base, int pages) {
    std::vector<QString> ends;
    for (char const* const extension : {".dds", ".tga"}) {
        bool is_unbroken = true;
        for (int number = 0; number <= pages || is_unbroken; ++number) {
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

template <typename PAGES_OF>
std::vector<SHARED_PAGE> shared_among(std::vector<PLANNED_ACTION> const& actions,
                                      QHash<QString, std::size_t> const& producers, TARGET_GUARD& guard,
                                      PAGES_OF const& pages_of) {
    std::vector<SHARED_PAGE> shared;
    std::set<std::pair<std::size_t, std::size_t>> told;
    QHash<QString, std::size_t> pages;
    for (std::size_t i = 0; i < actions.size(); ++i) {
        std::optional<ATLAS> const atlas = atlas_of(actions[i]);
        if (!atlas)
            continue;
        QString const place = guard.place(atlas->base);
        for (QString const& end : page_ends(atlas->base, pages_of(actions[i]))) {
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

/// Of so many pages of the atlas, the ends of files that no build has made.
std::vector<QString> foreign_ends(PLANNED_ACTION const& planned, ATLAS const& atlas, int pages, BUILD_STATE& state) {
    QSet<QString> own;
    for (int const number : pages_of_index(atlas.index))
        own.insert(page_end(number));
    std::vector<QString> ends = page_ends(atlas.base, pages);
    // The state may be gone, or may never have been on this machine; the index tells as well.
    std::erase_if(ends, [&](QString const& end) {
        QString const file = atlas.base + end;
        return !stands_there(file) || own.contains(end) ||
               state.is_made_by_build(planned, PATHS::logical_path(PHYSICAL_PATH(file)));
    });
    return ends;
}

}  // namespace

// Sources are opened for their sides only where their number alone leaves a doubt.

std::vector<SHARED_PAGE> shared_pages(std::vector<PLANNED_ACTION> const& actions,
                                      QHash<QString, std::size_t> const& producers, TARGET_GUARD& guard,
                                      RULE_CACHE const& rules) {
    if (shared_among(actions, producers, guard, sources_of).empty())
        return {};
    return shared_among(actions, producers, guard,
                        [&](PLANNED_ACTION const& planned) { return most_pages(planned, rules); });
}

QString take_out_foreign_pages(PLANNED_ACTION& planned, BUILD_STATE& state, RULE_CACHE const& rules) {
    std::optional<ATLAS> const atlas = atlas_of(planned);
    if (!atlas || foreign_ends(planned, *atlas, sources_of(planned), state).empty())
        return {};
    QString refusal;
    for (QString const& end : foreign_ends(planned, *atlas, most_pages(planned, rules), state)) {
        QString const file = atlas->base + end;
        if (refusal.isEmpty())
            refusal = QStringLiteral("%1 is no file of the atlas %2, but has the name of one of its pages; move it "
                                     "away, or give the atlas another name")
                          .arg(CONSOLE::shown(file), CONSOLE::shown(atlas->index));
        LOGICAL_PATH const path = PATHS::logical_path(PHYSICAL_PATH(file));
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
