// From Qt's text of a path to the standard library's, whatever letters it holds.
#pragma once

#include <QFile>
#include <QString>

#include <filesystem>

inline std::filesystem::path native_file_path(QString const& path) {
#ifdef Q_OS_WIN
    return std::filesystem::path(path.toStdWString());
#else
    return std::filesystem::path(QFile::encodeName(path).toStdString());
#endif
}
