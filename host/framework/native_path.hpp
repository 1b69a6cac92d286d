// From Qt's text to a path of this system, whatever the locale: names on disk are UTF-8.
#pragma once

#include <QString>

#include <filesystem>
#include <string>

namespace framework {

inline std::filesystem::path native_path(QString const& path) {
    QByteArray const utf8 = path.toUtf8();
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

}  // namespace framework
