#include "host/tool/build_session.hpp"

#include "host/framework/absolute_path.hpp"
#include "host/framework/printable.hpp"
#include "host/tool/database_step.hpp"
#include "host/tool/plugin_call.hpp"
#include "host/tool/state_folder.hpp"
#include "processor/host/paths.hpp"

#include <QDir>
#include <QFileInfo>

#include <stdexcept>

namespace tool {

namespace {

bool lies_in(QString const& path, QString const& folder) {
    return path == folder || path.startsWith(folder + u'/');
}

}  // namespace

BUILD_SESSION::~BUILD_SESSION() {
    {
        PLUGIN_CALL const call(plugin_file());
        actions_.clear();
    }
    ACTION_INTERFACE::s_asset_graph = nullptr;
    ACTION_INTERFACE::s_database = nullptr;
    framework::VERSION_CONTROL::set_current(nullptr);
}

EXIT_CODE BUILD_SESSION::report(framework::DIAGNOSTICS const& diagnostics) const {
    console_.report(diagnostics);
    return framework::has_errors(diagnostics) ? EXIT_CODE::wrong_use : EXIT_CODE::success;
}

EXIT_CODE BUILD_SESSION::open_project() {
    if (project_)
        return EXIT_CODE::success;
    QString file;
    if (options_.directory.empty()) {
        file = framework::find_project_file(QDir::currentPath());
        if (file.isEmpty()) {
            console_.error(QStringLiteral("no zab.toml in this folder or any above it; \"zab init\" makes one"));
            return EXIT_CODE::wrong_use;
        }
    } else {
        QString const folder = argument(options_.directory);
        file = framework::absolute_path(folder) + u'/' + QLatin1String(framework::project_file_name);
        if (!QFileInfo::exists(file)) {
            console_.error(
                QFileInfo(framework::absolute_path(folder)).isDir()
                    ? QStringLiteral("no zab.toml in %1; \"zab init\" makes one").arg(framework::printable(folder))
                    : QStringLiteral("there is no folder %1").arg(framework::printable(folder)));
            return EXIT_CODE::wrong_use;
        }
    }
    framework::DIAGNOSTICS diagnostics;
    project_ = framework::load_project(file, diagnostics);
    if (EXIT_CODE const code = report(diagnostics); code != EXIT_CODE::success)
        return code;
    PATHS::set_roots(PHYSICAL_PATH(project_->raw), PHYSICAL_PATH(project_->working));
    if (auto const refusal = why_no_state_folder(project_->state_folder)) {
        console_.error(*refusal);
        return EXIT_CODE::environment;
    }
    return EXIT_CODE::success;
}

EXIT_CODE BUILD_SESSION::scan() {
    framework::DIAGNOSTICS diagnostics;
    framework::scan_files(*project_, files_, diagnostics);
    // The project file keeps the roots apart as they are written; links may bring them together again.
    QString const raw = QFileInfo(project_->raw).canonicalFilePath();
    QString const working = QFileInfo(project_->working).canonicalFilePath();
    if (!raw.isEmpty() && !working.isEmpty() && (lies_in(raw, working) || lies_in(working, raw)))
        diagnostics.push_back(
            {framework::DIAGNOSTIC::SEVERITY::error, project_->working, 0, 0,
             QStringLiteral("leads to \"%1\", which is not apart from the raw root \"%2\"").arg(working, raw)});
    return report(diagnostics);
}

EXIT_CODE BUILD_SESSION::read_rules() {
    framework::DIAGNOSTICS diagnostics;
    std::vector<framework::RULE_FILE> files;
    for (framework::FOUND_RULE_FILE const& found : files_.rule_files)
        files.push_back(framework::read_rule_file(found.path, found.folder, diagnostics));
    rules_.emplace(*project_, std::move(files));
    return report(diagnostics);
}

EXIT_CODE BUILD_SESSION::read_tables() {
    for (auto table = project_->tables.begin(); table != project_->tables.end(); ++table) {
        QString error;
        if (!tables_.load(table.key(), table.value(), error)) {
            console_.message(console_.paint(COLOR::red, CONSOLE::shown(error)));
            return EXIT_CODE::wrong_use;
        }
    }
    return EXIT_CODE::success;
}

QString BUILD_SESSION::plugin_file() const {
    return options_.plugin.empty() ? PLUGIN_HOST::default_path() : argument(options_.plugin);
}

std::vector<MAPPED_LIBRARY> BUILD_SESSION::plugin_libraries() const {
    QString const plugin = framework::absolute_path(plugin_file());
    std::vector<MAPPED_LIBRARY> libraries = libraries_of(plugin);
    libraries.push_back({plugin, {}});
    return libraries;
}

EXIT_CODE BUILD_SESSION::load_plugin() {
    return call_plugin(plugin_file(), console_, [&] {
        QString error;
        if (!plugin_.load(plugin_file(), error)) {
            console_.error(framework::printable(error));
            return EXIT_CODE::environment;
        }
        QByteArray const simd = qgetenv("ZAB_SIMD");
        if (!simd.isEmpty() && plugin_.limit_simd() && !plugin_.limit_simd()(simd))
            console_.warning(QStringLiteral("ZAB_SIMD is \"%1\"; it takes scalar, sse4, avx2 or avx512")
                                 .arg(framework::printable(QString::fromLocal8Bit(simd))));
        return EXIT_CODE::success;
    });
}

EXIT_CODE BUILD_SESSION::create_actions() {
    version_control_ = framework::VERSION_CONTROL::make(project_->version_control, PHYSICAL_PATH(project_->folder));
    framework::VERSION_CONTROL::set_current(version_control_.get());
    ACTION_INTERFACE::s_database = &tables_;
    ACTION_INTERFACE::s_asset_graph = &asset_graph_;
    for (auto const& [path, entry] : files_.map)
        if (path.text().startsWith(QLatin1String("<working>/")))
            asset_graph_.add_texture(path);

    framework::DIAGNOSTICS diagnostics;
    framework::check_rule_names(rules_->files(), RULE_SCHEMA::all(), diagnostics);
    console_.report(diagnostics);

    EXIT_CODE const code = call_plugin(plugin_file(), console_, [&] { return ask_for_actions(); });
    if (code != EXIT_CODE::success)
        return code;
    if (project_->image_database && (!plugin_.image_database() || plugin_.processors().empty())) {
        console_.error(
            QStringLiteral("the project asks for an image-information database, and the plug-in makes none"));
        return EXIT_CODE::environment;
    }
    return EXIT_CODE::success;
}

EXIT_CODE BUILD_SESSION::ask_for_actions() {
    for (auto const& processor : plugin_.processors()) {
        for (auto const& [path, time] : processor->get_virtual_files(files_.map, *rules_)) {
            LOGICAL_PATH const logical = PATHS::logical_path(path);
            if (!files_.map.contains(logical))
                know_file(path, logical);
        }
    }
    {
        framework::RULE_QUESTION_RECORDER recorder;
        for (auto const& processor : plugin_.processors()) {
            // All of them are the host's before one is looked at.
            for (ACTION_INTERFACE* const action : processor->create_actions(files_.map, *rules_))
                actions_.emplace_back(action);
            if (std::find(actions_.begin(), actions_.end(), nullptr) != actions_.end())
                throw std::runtime_error("its processor \"" + processor->get_name().toStdString() +
                                         "\" answered with a null action");
        }
        rule_questions_ = recorder.take();
    }
    files_.map.set_look_up_hook(&framework::note_file_look_up);
    for (auto const& action : actions_)
        action->add_external_dependencies(files_.map, *rules_);
    return EXIT_CODE::success;
}

void BUILD_SESSION::know_file(PHYSICAL_PATH const& physical, LOGICAL_PATH const& logical) {
    files_.entries.push_back({physical, {}});
    files_.map.insert(logical, &files_.entries.back());
}

void BUILD_SESSION::create_database_actions() {
    for (auto& action : make_database_actions(*this, *plugin_.image_database(), *plugin_.processors().front())) {
        if (!action)
            throw std::runtime_error("it answered with a null action for the image-information database");
        action->add_external_dependencies(files_.map, *rules_);
        actions_.push_back(std::move(action));
    }
}

EXIT_CODE BUILD_SESSION::open() {
    using STAGE = EXIT_CODE (BUILD_SESSION::*)();
    // A stage that tells of mistakes does so before the next; the plug-in is loaded last because it takes longest.
    for (STAGE const stage : {&BUILD_SESSION::open_project, &BUILD_SESSION::scan, &BUILD_SESSION::read_rules,
                              &BUILD_SESSION::read_tables, &BUILD_SESSION::load_plugin, &BUILD_SESSION::create_actions})
        if (EXIT_CODE const code = (this->*stage)(); code != EXIT_CODE::success)
            return code;
    return EXIT_CODE::success;
}

std::optional<QString> BUILD_SESSION::project_path(std::string const& given) const {
    auto const logical = [&](QString const& path) -> std::optional<QString> {
        QString const text = PATHS::logical_path(PHYSICAL_PATH(path)).text();
        return text.startsWith(u'<') ? std::optional(text) : std::nullopt;
    };
    QString const path = argument(given);
    if (path.startsWith(QLatin1String("<raw>")) || path.startsWith(QLatin1String("<working>")))
        return LOGICAL_PATH(path).text();
    QString const absolute = framework::absolute_path(path);
    if (std::optional<QString> const direct = logical(absolute))
        return direct;
    // The current folder's own name may go through other links than the project's.
    QString const real = QFileInfo(absolute).canonicalFilePath();
    for (auto const& [root, token] : {std::pair(project_->raw, QStringLiteral("<raw>")),
                                      std::pair(project_->working, QStringLiteral("<working>"))}) {
        QString const real_root = QFileInfo(root).canonicalFilePath();
        if (!real.isEmpty() && !real_root.isEmpty() && lies_in(real, real_root))
            return token + real.mid(real_root.size());
    }
    return std::nullopt;
}

}  // namespace tool
