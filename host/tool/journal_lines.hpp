// The lines of a build's journal, and what they say when they are read after the build was cut off. One line is one
// JSON object, so that a line that was cut off itself is told from a whole one.
#pragma once

#include <QIODevice>
#include <QStringList>

#include <vector>

namespace tool {

enum class JOURNAL_EVENT { started, writes, ended };

/// The files that an action may have left behind when it was cut off.
struct UNFINISHED_ACTION {
    QStringList files;
    /// When it started, in milliseconds since 1970; 0 when that is not known.
    qint64 started = 0;

    friend bool operator==(UNFINISHED_ACTION const&, UNFINISHED_ACTION const&) = default;
};

/// A line with its end. `time` counts for `started` alone: milliseconds since 1970.
QByteArray journal_line(JOURNAL_EVENT event, int action, QStringList const& files, qint64 time = 0);

/// What the journal shows as running, in the order of the actions' numbers. `journal` is open for reading. Lines that
/// are none, and one that was cut off, count for nothing. Throws std::bad_alloc.
std::vector<UNFINISHED_ACTION> read_journal(QIODevice& journal);

}  // namespace tool
