// The project file, zab.toml: where a project's folders are and what holds for it as a whole.
#pragma once

#include "host/framework/rule_files.hpp"

#include <QMap>
#include <QVariant>

#include <optional>

namespace framework {

/// The name of the project file; a folder that holds one is a project.
inline constexpr char const* project_file_name = "zab.toml";

/// Every path is absolute and clean: '/' between sections, none at the end, no "." or "..".
struct PROJECT {
    QString file;
    QString folder;
    QString raw;
    QString working;
    /// What the host keeps between builds; safe to delete.
    QString state_folder;
    /// Global rules by their case-folded name, with name and place as written.
    QMap<QString, RULE_VALUES::VALUE> globals;
    /// XML files of the host's database tables by table name.
    QMap<QString, QString> tables;
    /// Whether a build ends with the image-information database.
    bool image_database = false;
    /// "none", "git" or "perforce".
    QString version_control = QStringLiteral("none");
    /// The rules of the project file itself; they apply to the whole raw tree.
    RULE_FILE rules;
};

/// Reads a project file, of which every key is optional. Nothing when it has errors; `diagnostics` then holds at least
/// one. Nothing on disk but the file itself is looked at.
ZAB_SHARED_API std::optional<PROJECT> load_project(QString const& file, DIAGNOSTICS& diagnostics);

/// The project file in `folder` or in the nearest folder above it that has one; empty when there is none.
ZAB_SHARED_API QString find_project_file(QString const& folder);

}  // namespace framework
