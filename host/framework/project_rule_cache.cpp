// A build asks for the rules of every path several times over, so the work is done per folder and per set of tables,
// not per path: a folder with a rule file (its scope) knows which tables can apply there at all, and all paths for
// which the same tables of a scope match share one resolved rule. A question costs the search of the scope, the match
// of those tables that have patterns, and one look-up.
#include "host/framework/project_rule_cache.hpp"

#include <algorithm>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

namespace framework {

namespace {

QLatin1String const raw_token("<raw>/");

struct TEXT_HASH {
    using is_transparent = void;
    std::size_t operator()(QStringView text) const { return qHash(text); }
};
struct TEXT_EQUAL {
    using is_transparent = void;
    bool operator()(QStringView left, QStringView right) const { return left == right; }
};

// One table as a scope sees it.
struct SCOPED_TABLE {
    RULE_TABLE const* table;
    // How many sections of a path's way below the raw root belong to the folder of the table's file.
    std::size_t depth;
};

// The tables of one name that can apply in one scope, and the rules already put together from them. Those of the
// folders above stay where they are: thousands of rule files below thousands of tables would copy them millions of
// times.
struct LAYERS {
    LAYERS const* above = nullptr;
    std::vector<SCOPED_TABLE> tables;
    // These two with all that stands above.
    std::size_t count = 0;
    bool has_patterns = false;
    // Which tables match (one bit for each) to the rule that they make.
    std::map<std::vector<bool>, std::shared_ptr<RULE_VALUES const>> resolved;
};

struct SCOPE {
    SCOPE* above = nullptr;
    // Of the names that the folder's own file has tables of.
    std::unordered_map<QString, LAYERS, TEXT_HASH, TEXT_EQUAL> layers;

    LAYERS* find(QString const& rule_name) {
        for (SCOPE* scope = this; scope; scope = scope->above)
            if (auto const found = scope->layers.find(rule_name); found != scope->layers.end())
                return &found->second;
        return nullptr;
    }
};

// All of them, the undermost first.
std::vector<SCOPED_TABLE> all_tables(LAYERS const& layers) {
    std::vector<SCOPED_TABLE> tables;
    for (LAYERS const* at = &layers; at; at = at->above)
        tables.insert(tables.end(), at->tables.rbegin(), at->tables.rend());
    std::reverse(tables.begin(), tables.end());
    return tables;
}

// Where the last section of the path begins to be separate: the folder's length.
QStringView folder_of(QStringView path) {
    for (qsizetype i = path.size() - 1; i >= 0; --i)
        if (path[i] == u'/')
            return path.left(i);
    return {};
}

std::shared_ptr<RULE_VALUES const> resolve(LAYERS const& layers, std::vector<bool> const& matching) {
    std::vector<SCOPED_TABLE> const tables = all_tables(layers);
    std::vector<RULE_VALUES::VALUE> values;
    bool exists = false;
    for (std::size_t i = 0; i < tables.size(); ++i) {
        if (!matching[i])
            continue;
        exists = true;
        values.insert(values.end(), tables[i].table->values.begin(), tables[i].table->values.end());
    }
    return exists ? std::make_shared<RULE_VALUES>(std::move(values)) : nullptr;
}

// Which tables match the path below the raw root.
std::vector<bool> match(LAYERS const& layers, QStringView path) {
    std::vector<bool> matching(layers.count, true);
    if (!layers.has_patterns)
        return matching;
    std::vector<QStringView> sections;
    split_path(path, sections);
    std::vector<QStringView> below;
    std::size_t i = layers.count;
    for (LAYERS const* at = &layers; at; at = at->above) {
        for (auto scoped = at->tables.rbegin(); scoped != at->tables.rend(); ++scoped) {
            --i;
            if (scoped->table->match.is_empty())
                continue;
            below.assign(sections.begin() + static_cast<std::ptrdiff_t>(std::min(scoped->depth, sections.size())),
                         sections.end());
            matching[i] = scoped->table->match.matches(below);
        }
    }
    return matching;
}

}  // namespace

struct PROJECT_RULE_CACHE::STATE {
    std::vector<RULE_FILE> files;
    std::unordered_map<QString, SCOPE, TEXT_HASH, TEXT_EQUAL> scopes;
    QMap<QString, std::shared_ptr<RULE_VALUES const>> globals;
    // Guards every LAYERS::resolved; all else is settled by the constructor.
    mutable std::shared_mutex mutex;

    // The layers that apply to a path below the raw root; null when there are none.
    LAYERS* layers(QStringView path, QString const& rule_name) {
        QStringView folder = folder_of(path);
        while (true) {
            auto const scope = scopes.find(folder);
            if (scope != scopes.end())
                return scope->second.find(rule_name);
            // The root itself always is a scope.
            folder = folder_of(folder);
        }
    }

    // Null when no table applies.
    std::shared_ptr<RULE_VALUES const> values(QString const& path, QString const& rule_name) {
        if (!path.startsWith(raw_token))
            return nullptr;
        QStringView const below = QStringView(path).mid(raw_token.size());
        LAYERS* const layers = this->layers(below, rule_name);
        if (!layers)
            return nullptr;
        std::vector<bool> const matching = match(*layers, below);
        {
            std::shared_lock const lock(mutex);
            auto const found = layers->resolved.find(matching);
            if (found != layers->resolved.end())
                return found->second;
        }
        std::unique_lock const lock(mutex);
        return layers->resolved.try_emplace(matching, resolve(*layers, matching)).first->second;
    }
};

PROJECT_RULE_CACHE::PROJECT_RULE_CACHE(PROJECT const& project, std::vector<RULE_FILE> files)
    : state_(std::make_unique<STATE>()) {
    state_->files.push_back(project.rules);
    state_->files.back().folder.clear();
    // A folder sorts before the folders in it.
    std::sort(files.begin(), files.end(),
              [](RULE_FILE const& left, RULE_FILE const& right) { return left.folder < right.folder; });
    std::move(files.begin(), files.end(), std::back_inserter(state_->files));

    // The project file and the root's own rule file share the root's scope.
    state_->scopes[QString()];
    for (RULE_FILE const& file : state_->files) {
        auto scope = state_->scopes.find(file.folder);
        if (scope == state_->scopes.end()) {
            QStringView above = folder_of(file.folder);
            while (!state_->scopes.contains(above))
                above = folder_of(above);
            SCOPE* const outer = &state_->scopes.find(above)->second;
            scope = state_->scopes.emplace(file.folder, SCOPE{outer, {}}).first;
        }
        std::vector<QStringView> sections;
        split_path(file.folder, sections);
        for (RULE_TABLE const& table : file.rules) {
            LAYERS const* const known = scope->second.find(table.name);
            LAYERS& layers = scope->second.layers[table.name];
            if (known && known != &layers && layers.tables.empty()) {
                layers.above = known;
                layers.count = known->count;
                layers.has_patterns = known->has_patterns;
            }
            layers.tables.push_back({&table, sections.size()});
            ++layers.count;
            layers.has_patterns = layers.has_patterns || !table.match.is_empty();
        }
    }

    for (RULE_VALUES::VALUE const& value : project.globals) {
        auto values = std::make_shared<RULE_VALUES>();
        values->set(value);
        state_->globals.insert(value.property.toCaseFolded(), std::move(values));
    }
}

PROJECT_RULE_CACHE::~PROJECT_RULE_CACHE() = default;

RULE PROJECT_RULE_CACHE::get(LOGICAL_PATH const& path, QString const& rule_name) const {
    return RULE(state_->values(path, rule_name), path.text(), rule_name);
}

RULE PROJECT_RULE_CACHE::get_global(QString const& rule_name) const {
    return RULE(state_->globals.value(rule_name.toCaseFolded()), {}, rule_name);
}

std::vector<QString> PROJECT_RULE_CACHE::rule_names() const {
    std::vector<QString> names;
    for (RULE_FILE const& file : state_->files)
        for (RULE_TABLE const& table : file.rules)
            names.push_back(table.name);
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

std::vector<RULE_TABLE const*> PROJECT_RULE_CACHE::matching_tables(LOGICAL_PATH const& path,
                                                                   QString const& rule_name) const {
    std::vector<RULE_TABLE const*> tables;
    if (!path.text().startsWith(raw_token))
        return tables;
    QStringView const below = QStringView(path.text()).mid(raw_token.size());
    LAYERS const* const layers = state_->layers(below, rule_name);
    if (!layers)
        return tables;
    std::vector<bool> const matching = match(*layers, below);
    std::vector<SCOPED_TABLE> const all = all_tables(*layers);
    for (std::size_t i = 0; i < matching.size(); ++i)
        if (matching[i])
            tables.push_back(all[i].table);
    return tables;
}

std::vector<RULE_FILE> const& PROJECT_RULE_CACHE::files() const {
    return state_->files;
}

}  // namespace framework
