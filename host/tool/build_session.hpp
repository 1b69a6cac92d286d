// A project opened for one command, stage by stage: project file, scan, rules, plug-in, actions. Commands ask for as
// far as they need; a stage that fails has said why and ends the command.
#pragma once

#include "host/framework/file_scan.hpp"
#include "host/framework/project_rule_cache.hpp"
#include "host/framework/rule_questions.hpp"
#include "host/framework/version_control.hpp"
#include "host/framework/xml_tables.hpp"
#include "host/tool/command.hpp"
#include "host/tool/host_schemas.hpp"
#include "host/tool/mapped_libraries.hpp"
#include "host/tool/plugin_host.hpp"
#include "processor/host/action_interface.hpp"
#include "processor/host/asset_graph.hpp"

#include <optional>

namespace tool {

class BUILD_SESSION {
public:
    explicit BUILD_SESSION(CONTEXT& context) : console_(context.console), options_(context.options) {}
    BUILD_SESSION(BUILD_SESSION const&) = delete;
    BUILD_SESSION& operator=(BUILD_SESSION const&) = delete;
    ~BUILD_SESSION();

    /// Finds and reads the project file and sets the data roots. Further calls do nothing.
    EXIT_CODE open_project();
    EXIT_CODE load_plugin();
    /// All stages. Afterwards everything below is there.
    EXIT_CODE open();

    framework::PROJECT const& project() const { return *project_; }
    PLUGIN_HOST const& plugin() const { return plugin_; }
    FILE_MAP& files() { return files_.map; }
    framework::PROJECT_RULE_CACHE const& rules() const { return *rules_; }
    std::vector<std::unique_ptr<ACTION_INTERFACE>> const& actions() const { return actions_; }
    QTSHARED::ASSET_GRAPH& asset_graph() { return asset_graph_; }
    framework::XML_TABLES const& tables() const { return tables_; }

    /// Adds a file that is going to be made, at the end of the file map.
    void know_file(PHYSICAL_PATH const& physical, LOGICAL_PATH const& logical);
    /// Adds every file of the working root that the file map does not have yet.
    void know_made_files() { framework::scan_made_files(*project_, files_); }
    /// Makes the actions of the database step, once all others and their targets are known, and appends them.
    void create_database_actions();
    /// What was asked of the rules while the actions were made.
    framework::RULE_QUESTIONS const& rule_questions() const { return rule_questions_; }
    QString plugin_file() const;
    /// The files that hold the plug-in's code: its own, the framework's, and all that it works with.
    std::vector<MAPPED_LIBRARY> plugin_libraries() const;

    /// A path from the command line, taken from the current folder, as a path of this project ("<raw>/...",
    /// "<working>/..."); nothing when it lies outside both roots. It may be given as a logical path as well.
    std::optional<QString> project_path(std::string const& given) const;

private:
    EXIT_CODE scan();
    EXIT_CODE read_rules();
    EXIT_CODE read_tables();
    EXIT_CODE create_actions();
    EXIT_CODE ask_for_actions();
    EXIT_CODE report(framework::DIAGNOSTICS const& diagnostics) const;

    CONSOLE& console_;
    COMMON_OPTIONS const& options_;
    HOST_SCHEMAS schemas_;
    std::optional<framework::PROJECT> project_;
    std::unique_ptr<framework::VERSION_CONTROL> version_control_;
    framework::SCANNED_FILES files_;
    std::optional<framework::PROJECT_RULE_CACHE> rules_;
    framework::XML_TABLES tables_;
    QTSHARED::ASSET_GRAPH asset_graph_;
    // Before the actions, which refer to the processors.
    PLUGIN_HOST plugin_;
    std::vector<std::unique_ptr<ACTION_INTERFACE>> actions_;
    framework::RULE_QUESTIONS rule_questions_;
};

}  // namespace tool
