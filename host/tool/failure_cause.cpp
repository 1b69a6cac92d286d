#include "host/tool/failure_cause.hpp"

#include "host/tool/picture_file.hpp"

#include <QFile>
#include <QFileInfo>

#include <optional>

namespace tool {

namespace {

// The kind that a file of this extension holds, as describe() names kinds; empty for files that are no images.
QString kind_of_name(QString const& path) {
    QString const extension = QFileInfo(path).suffix().toUpper();
    if (extension == QLatin1String("JPEG"))
        return QStringLiteral("JPG");
    if (extension == QLatin1String("TIFF"))
        return QStringLiteral("TIF");
    for (char const* kind : {"TGA", "PNG", "JPG", "TIF", "DDS"})
        if (extension == QLatin1String(kind))
            return extension;
    return {};
}

}  // namespace

QString why_unreadable(QString const& path) {
    QString const kind = kind_of_name(path);
    if (kind.isEmpty())
        return {};
    QFileInfo const info(path);
    if (!info.exists())
        return QStringLiteral("the file is not there");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    if (file.size() == 0)
        return QStringLiteral("the file is empty");
    file.close();

    std::filesystem::path const native = native_path(path);
    std::string cause;
    std::optional<IMAGE_LOADER::FILE_DESCRIPTION> const description = IMAGE_LOADER::describe(native, cause);
    if (!description)
        return QString::fromStdString(cause);
    QString const held = QString::fromStdString(description->kind);
    if (held != kind)
        return QStringLiteral("the file holds a %1 image, not %2").arg(held, kind);
    if (!IMAGE_LOADER::load_picture(native, 0, 0, cause))
        return QString::fromStdString(cause);
    return {};
}

}  // namespace tool
