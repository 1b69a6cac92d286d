// Whether a path may be written or removed: only what lies in the working root, both as it is written and on the disk
// that symbolic links lead to.
#pragma once

#include <QHash>
#include <QString>

namespace tool {

class TARGET_GUARD {
public:
    explicit TARGET_GUARD(QString const& working_root);

    /// Why the file may not be touched; empty when it may. Answers per folder are remembered.
    QString refusal(QString const& path);
    /// Where the file really lies, with the links of its folders followed and its own name as it is.
    QString place(QString const& path);

private:
    QString const& real_folder(QString const& folder);

    QString root_;
    QString real_root_;
    QHash<QString, QString> real_folders_;
};

}  // namespace tool
