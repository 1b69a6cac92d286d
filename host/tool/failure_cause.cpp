#include "host/tool/failure_cause.hpp"

#include "host/tool/picture_file.hpp"

#include <QFile>
#include <QFileInfo>

namespace tool {

namespace {

// The kind that a file of this extension holds; empty for files that are no images.
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

// The kind that the file's first bytes give away; empty for TGA, which has no signature, and for everything else.
QString kind_of_signature(QByteArray const& bytes) {
    struct SIGNATURE {
        QByteArray bytes;
        char const* kind;
    };
    static SIGNATURE const signatures[] = {
        {QByteArrayLiteral("\x89PNG\r\n\x1a\n"), "PNG"},
        {QByteArrayLiteral("DDS "), "DDS"},
        {QByteArrayLiteral("\xff\xd8\xff"), "JPG"},
        {QByteArrayLiteral("II*\0"), "TIF"},
        {QByteArrayLiteral("MM\0*"), "TIF"},
        {QByteArrayLiteral("II+\0"), "TIF"},
        {QByteArrayLiteral("MM\0+"), "TIF"},
    };
    for (SIGNATURE const& signature : signatures)
        if (bytes.startsWith(signature.bytes))
            return QLatin1String(signature.kind);
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
    QString const held = kind_of_signature(file.read(8));
    if (!held.isEmpty() && held != kind)
        return QStringLiteral("the file holds a %1 image, not %2").arg(held, kind);
    file.close();

    std::filesystem::path const native = native_path(path);
    std::string cause;
    if (!IMAGE_LOADER::load_picture(native, 0, 0, cause))
        return QString::fromStdString(cause);
    return {};
}

}  // namespace tool
