// Paths that people write, made absolute. Qt takes a name that begins with a colon for a file inside the program ("Qt
// resource"), and so for absolute; here it is a file like others.
#pragma once

#include <QDir>
#include <QString>

namespace framework {

/// `path` as seen from the absolute `folder`, clean.
inline QString absolute_path(QString const& path, QString const& folder = QDir::currentPath()) {
    return QDir::cleanPath(path.startsWith(u'/') ? path : folder + u'/' + path);
}

}  // namespace framework
