#include "host/tool/target_guard.hpp"

#include <QDir>
#include <QFileInfo>

namespace tool {

namespace {

// Where the path would lie if it were made: the deepest folder that exists, with its links resolved, and the rest.
QString real_path(QString const& path) {
    QString existing = path;
    QString rest;
    while (true) {
        QFileInfo const info(existing);
        QString const real = info.canonicalFilePath();
        if (!real.isEmpty())
            return QDir::cleanPath(real + rest);
        // A link that leads nowhere yet is followed by whoever makes the folder.
        if (info.isSymLink())
            return QDir::cleanPath(info.symLinkTarget() + rest);
        QString const parent = info.path();
        if (parent == existing)
            return path;
        rest = existing.mid(parent == QLatin1String("/") ? 0 : parent.size()) + rest;
        existing = parent;
    }
}

bool is_inside(QString const& path, QString const& folder) {
    return path.startsWith(folder.endsWith(u'/') ? folder : folder + u'/');
}

}  // namespace

TARGET_GUARD::TARGET_GUARD(QString const& working_root) : root_(working_root), real_root_(real_path(working_root)) {
}

QString TARGET_GUARD::refusal(QString const& path) {
    QString const clean = QDir::cleanPath(path);
    if (!is_inside(clean, root_))
        return QStringLiteral("the target \"%1\" lies outside the working root \"%2\"").arg(clean, root_);
    // The file itself may be a link: it is replaced, not followed. Its folders are followed.
    QString const folder = QFileInfo(clean).path();
    auto known = real_folders_.find(folder);
    if (known == real_folders_.end())
        known = real_folders_.insert(folder, real_path(folder));
    if (*known == real_root_ || is_inside(*known, real_root_))
        return {};
    return QStringLiteral("the target \"%1\" lies outside the working root \"%2\": a link leads to \"%3\"")
        .arg(clean, root_, *known);
}

}  // namespace tool
