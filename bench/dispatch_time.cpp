// How long it takes to choose the actions of a project, for tables of 125,000 to 1,000,000 files: time per file, which
// has to stay the same for the whole to be linear. No file exists on disk; dispatch goes by names, siblings and rules
// alone.
#include "host/framework/project_rule_cache.hpp"
#include "processor/action_dispatch.hpp"
#include "processor/host/paths.hpp"

#include <chrono>
#include <cstdio>
#include <deque>

namespace {

class NO_PROCESSOR : public PROCESSOR_INTERFACE {
public:
    QString get_name() override { return QStringLiteral("Bench"); }
    QVector<ACTION_INTERFACE*> create_actions(FILE_MAP const&, RULE_CACHE const&) override { return {}; }
};

framework::RULE_FILE rules() {
    framework::RULE_TABLE texture;
    texture.name = QStringLiteral("Texture");
    texture.values = {{"TargetPath", QStringLiteral("textures/{dir}"), "zab.toml", 2, 1},
                      {"CompressionFormat", QStringLiteral("dxt5"), "zab.toml", 3, 1}};
    framework::RULE_TABLE atlas;
    atlas.name = QStringLiteral("Atlas");
    QString error;
    atlas.match.add(*framework::PATH_PATTERN::parse(QStringLiteral("icons_*"), error));
    atlas.values = {{"TargetBaseName", QStringLiteral("atlas/{dir}"), "zab.toml", 6, 1},
                    {"Width", 1024, "zab.toml", 7, 1},
                    {"Height", 1024, "zab.toml", 8, 1}};
    return {QStringLiteral("zab.toml"), {}, {texture, atlas}};
}

// Names as in a game: plain textures, packed maps with their siblings, atlas sources, and files that are no images.
void fill(FILE_MAP& files, std::deque<FILE_ENTRY>& entries, int count) {
    static QLatin1String const endings[] = {
        QLatin1String(".tga"),       QLatin1String("_gloss.tga"), QLatin1String("_factionmask.tga"),
        QLatin1String("_mask1.tga"), QLatin1String("_mask2.tga"), QLatin1String(".png"),
        QLatin1String("_icon.tga"),  QLatin1String(".txt")};
    files.reserve(count);
    for (int i = 0; i < count; ++i) {
        QString const name = QStringLiteral("set%1/%2stone_%3")
                                 .arg(i / 800)
                                 .arg(i % 16 == 0 ? QStringLiteral("icons_") : QString())
                                 .arg(i / 8) +
                             endings[i % 8];
        entries.push_back({PHYSICAL_PATH(QStringLiteral("/raw/") + name), {}});
        files.insert(LOGICAL_PATH(QStringLiteral("<raw>/") + name), &entries.back());
    }
}

}  // namespace

int main() {
    PATHS::set_roots(PHYSICAL_PATH(QStringLiteral("/raw")), PHYSICAL_PATH(QStringLiteral("/working")));
    std::printf("%10s %10s %10s %14s\n", "files", "actions", "ms", "ns per file");
    for (int count = 125'000; count <= 1'000'000; count *= 2) {
        framework::PROJECT project;
        project.rules = rules();
        framework::PROJECT_RULE_CACHE const rule_cache(project, {});
        FILE_MAP files;
        std::deque<FILE_ENTRY> entries;
        fill(files, entries, count);
        NO_PROCESSOR processor;
        auto const begin = std::chrono::steady_clock::now();
        QVector<ACTION_INTERFACE*> const actions = ACTION_DISPATCH(processor, files, rule_cache).create_actions();
        std::chrono::duration<double, std::nano> const time = std::chrono::steady_clock::now() - begin;
        std::printf("%10d %10d %10.0f %14.0f\n", count, actions.size(), time.count() / 1e6, time.count() / count);
        qDeleteAll(actions);
    }
}
