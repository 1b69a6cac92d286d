// Messages about files that people write: project file, rule files, names on disk. They are values, collected while a
// reader goes on as far as it can, so that one run tells of every mistake and not of the first one alone.
#pragma once

#include "processor/host/export.hpp"

#include <QString>

#include <vector>

namespace framework {

struct DIAGNOSTIC {
    enum class SEVERITY { warning, error };

    SEVERITY severity = SEVERITY::error;
    /// The file that the message is about, as an absolute path.
    QString path;
    /// Both count from 1; 0 means that the message is about the file as a whole.
    int line = 0;
    int column = 0;
    QString text;
};

using DIAGNOSTICS = std::vector<DIAGNOSTIC>;

/// "path:line:column: error: text", the form that editors jump from. `shown_path` stands for the path.
ZAB_SHARED_API QString format(DIAGNOSTIC const& diagnostic, QString const& shown_path);
inline QString format(DIAGNOSTIC const& diagnostic) {
    return format(diagnostic, diagnostic.path);
}

ZAB_SHARED_API bool has_errors(DIAGNOSTICS const& diagnostics);

/// The candidate that a person most likely meant by `word`: the one the fewest single-letter changes away (case does
/// not count), the first of equals. Empty when none is near enough to be a slip of the fingers.
ZAB_SHARED_API QString nearest_name(QString const& word, std::vector<QString> const& candidates);

}  // namespace framework
