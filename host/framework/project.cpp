#include "host/framework/project.hpp"

#include "host/framework/absolute_path.hpp"
#include "host/framework/rule_tables.hpp"

#include <QDir>
#include <QFileInfo>

namespace framework {

namespace {

bool lies_in(QString const& path, QString const& folder) {
    return path == folder || path.startsWith(folder.endsWith(u'/') ? folder : folder + u'/');
}

class PROJECT_READER {
public:
    PROJECT_READER(PROJECT& project, TOML_REPORTER& reporter) : project_(project), reporter_(reporter) {}

    void read(toml::table const& document) {
        project_.raw = absolute(QStringLiteral("raw_data"));
        project_.working = absolute(QStringLiteral("working_data"));
        for (auto const& [key, node] : in_written_order(document)) {
            std::string_view const name = key->str();
            if (name == "rule") {
                project_.rules.rules = read_rule_tables(*node, reporter_);
            } else if (name == "roots" || name == "global" || name == "tables" || name == "image_database" ||
                       name == "version_control") {
                auto const* const table = node->as_table();
                if (table)
                    read_section(name, *table, *key);
                else
                    reporter_.error(
                        node->source(),
                        QStringLiteral("\"%1\" is %2; it is written as [%1]").arg(to_qstring(name), type_name(*node)));
            } else {
                reporter_.unknown_key(*key, {"roots", "global", "tables", "image_database", "version_control", "rule"});
            }
        }
        check_roots();
    }

private:
    QString absolute(QString const& path) const { return absolute_path(path, project_.folder); }

    void read_section(std::string_view name, toml::table const& table, toml::key const& section) {
        if (name == "roots")
            roots_place_ = section.source();
        for (auto const& [key, node] : in_written_order(table)) {
            if (name == "roots")
                read_root(*key, *node);
            else if (name == "global")
                read_global(*key, *node);
            else if (name == "tables")
                read_table(*key, *node);
            else if (name == "image_database")
                read_image_database(*key, *node);
            else
                read_version_control(*key, *node);
        }
    }

    std::optional<QString> path_value(toml::key const& key, toml::node const& node) {
        auto const* const text = node.as_string();
        if (text && !text->get().empty())
            return absolute(to_qstring(text->get()));
        reporter_.error(node.source(),
                        QStringLiteral("\"%1\" holds %2; it takes a path as a string")
                            .arg(to_qstring(key.str()), text ? QStringLiteral("an empty string") : type_name(node)));
        return std::nullopt;
    }

    void read_root(toml::key const& key, toml::node const& node) {
        if (key.str() != "raw" && key.str() != "working") {
            reporter_.unknown_key(key, {"raw", "working"});
        } else if (std::optional<QString> const path = path_value(key, node)) {
            (key.str() == "raw" ? project_.raw : project_.working) = *path;
            roots_place_ = node.source();
        }
    }

    void read_global(toml::key const& key, toml::node const& node) {
        QString const name = to_qstring(key.str());
        QVariant value = scalar_value(node);
        if (!value.isValid()) {
            reporter_.error(node.source(),
                            QStringLiteral("the global rule \"%1\" holds %2; it takes a string, a number or a boolean")
                                .arg(name, type_name(node)));
            return;
        }
        QString const folded = name.toCaseFolded();
        if (project_.globals.contains(folded)) {
            reporter_.error(key.source(), QStringLiteral("the global rule \"%1\" is set a second time; line %2 sets "
                                                         "\"%3\", and case does not count")
                                              .arg(name, QString::number(project_.globals[folded].line),
                                                   project_.globals[folded].property));
            return;
        }
        project_.globals[folded] = {name, std::move(value), project_.file, static_cast<int>(key.source().begin.line),
                                    static_cast<int>(key.source().begin.column)};
    }

    void read_table(toml::key const& key, toml::node const& node) {
        if (std::optional<QString> const path = path_value(key, node))
            project_.tables[to_qstring(key.str())] = *path;
    }

    void read_image_database(toml::key const& key, toml::node const& node) {
        if (key.str() != "enabled")
            reporter_.unknown_key(key, {"enabled"});
        else if (auto const* const enabled = node.as_boolean())
            project_.image_database = enabled->get();
        else
            reporter_.error(node.source(),
                            QStringLiteral("\"enabled\" holds %1; it takes true or false").arg(type_name(node)));
    }

    void read_version_control(toml::key const& key, toml::node const& node) {
        if (key.str() != "kind") {
            reporter_.unknown_key(key, {"kind"});
            return;
        }
        auto const* const text = node.as_string();
        QString const kind = text ? to_qstring(text->get()) : QString();
        if (kind == QLatin1String("none") || kind == QLatin1String("git") || kind == QLatin1String("perforce"))
            project_.version_control = kind;
        else
            reporter_.error(node.source(),
                            QStringLiteral("\"kind\" holds %1; it takes \"none\", \"git\" or \"perforce\"")
                                .arg(text ? QStringLiteral("\"%1\"").arg(kind) : type_name(node)));
    }

    // Targets among sources would be taken for sources by the next build.
    void check_roots() {
        if (lies_in(project_.raw, project_.working) || lies_in(project_.working, project_.raw))
            reporter_.error(roots_place_, QStringLiteral("the raw root \"%1\" and the working root \"%2\" lie in one "
                                                         "another; they must be apart")
                                              .arg(project_.raw, project_.working));
    }

    PROJECT& project_;
    TOML_REPORTER& reporter_;
    toml::source_region roots_place_;
};

}  // namespace

std::optional<PROJECT> load_project(QString const& file, DIAGNOSTICS& diagnostics) {
    DIAGNOSTICS found;
    PROJECT project;
    project.file = absolute_path(file);
    project.folder = QFileInfo(project.file).path();
    project.state_folder = project.folder + QStringLiteral("/.zab");
    project.rules.path = project.file;
    std::optional<toml::table> const document = read_toml(project.file, found);
    if (document) {
        TOML_REPORTER reporter(project.file, found);
        PROJECT_READER(project, reporter).read(*document);
    }
    bool const sound = !has_errors(found);
    diagnostics.append(found);
    return sound ? std::optional(std::move(project)) : std::nullopt;
}

QString find_project_file(QString const& folder) {
    QString above = absolute_path(folder);
    while (true) {
        QString const file = QDir(above).filePath(QLatin1String(project_file_name));
        if (QFileInfo::exists(file))
            return file;
        QString const parent = QFileInfo(above).path();
        if (parent == above)
            return {};
        above = parent;
    }
}

}  // namespace framework
