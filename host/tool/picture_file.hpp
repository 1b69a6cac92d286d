// Between the command line and the image loader: paths, and the words for what cannot be had.
#pragma once

#include "platform/image_loader/picture.hpp"

#include <QString>

#include <filesystem>

namespace tool {

inline std::filesystem::path native_path(QString const& path) {
    return std::filesystem::u8path(path.toUtf8().toStdString());
}

}  // namespace tool
