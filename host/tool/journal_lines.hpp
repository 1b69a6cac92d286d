// The lines of a build's journal, and what they say when they are read after the build was cut off. One line is one
// JSON object, so that a line that was cut off itself is told from a whole one.
#pragma once

#include "host/tool/file_identity.hpp"

#include <QIODevice>
#include <QStringList>

#include <vector>

namespace tool {

enum class JOURNAL_EVENT { started, writes, ended };

/// A file that an action is about to make or to write over.
struct FILE_AT_RISK {
    QString path;
    /// What stood there before.
    FILE_IDENTITY before;
    /// What the action made there, as far as it said so.
    FILE_IDENTITY made;

    friend bool operator==(FILE_AT_RISK const&, FILE_AT_RISK const&) = default;
};

/// The files that an action may have left behind when it was cut off.
struct UNFINISHED_ACTION {
    std::vector<FILE_AT_RISK> files;
    /// When it started, in milliseconds since 1970; 0 when that is not known.
    qint64 started = 0;

    /// Adds the file, or what is new of one that is known.
    void take(FILE_AT_RISK const& file);

    friend bool operator==(UNFINISHED_ACTION const&, UNFINISHED_ACTION const&) = default;
};

struct JOURNAL {
    /// Of which file it says that it is that file itself; empty when it says nothing.
    QString origin;
    /// What was running, in the order of the actions' numbers.
    std::vector<UNFINISHED_ACTION> actions;
};

/// The first line, with its end.
QByteArray journal_head(QString const& origin);
/// A line with its end. `time` counts for `started` alone: milliseconds since 1970.
QByteArray journal_line(JOURNAL_EVENT event, int action, std::vector<FILE_AT_RISK> const& files, qint64 time = 0);

/// `journal` is open for reading. Lines that are none, and one that was cut off, count for nothing. Throws
/// std::bad_alloc.
JOURNAL read_journal(QIODevice& journal);

/// Six numbers in hexadecimal digits with points between them, since JSON has no integers of 64 bits; empty for no
/// file.
QString to_text(FILE_IDENTITY const& identity);
FILE_IDENTITY to_identity(QString const& text);

}  // namespace tool
