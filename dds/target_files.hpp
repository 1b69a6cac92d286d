// An action's target files by the paths that the host gives, handled where all outputs are: a folder that is exchanged
// for a link while a build runs takes nothing outside.
#pragma once

#include "platform/qe/replace_file.hpp"

#include <QFile>
#include <QString>

#include <filesystem>
#include <string>

inline std::filesystem::path native_target(QString const& path) {
    return std::filesystem::path(QFile::encodeName(path).toStdString());
}

/// A folder that cannot be made shows when the target is written.
inline void make_target_folder(QString const& target) {
    std::string ignored;
    QE::create_folders(native_target(target).parent_path(), ignored);
}

inline void remove_target(QString const& path) {
    QE::remove_file(native_target(path));
}
