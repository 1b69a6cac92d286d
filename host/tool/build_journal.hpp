// Which files are being written at this moment, kept in a file, so that a build that comes after one that was killed
// knows what that one left half done. A line is appended before an action starts and after it has ended; nothing is
// forced to the disk, because what has reached the kernel survives the end of a process.
#pragma once

#include "host/tool/journal_lines.hpp"
#include "host/tool/planner.hpp"

namespace tool {

/// What the action announces to write and may leave half done.
QStringList files_at_risk(PLANNED_ACTION const& planned);

/// Removes each of the files, and what was written beside them since then to take their place.
void remove_unfinished_files(UNFINISHED_ACTION const& action);

/// Removes what in the folders of these files was written under an unfinished name since then, whatever the file is
/// called in the end. In the raw folder, where people put files of their own, it leaves such names alone. Only when no
/// action runs.
void remove_unfinished_neighbours(UNFINISHED_ACTION const& action);

class BUILD_JOURNAL {
public:
    BUILD_JOURNAL() = default;
    BUILD_JOURNAL(BUILD_JOURNAL const&) = delete;
    BUILD_JOURNAL& operator=(BUILD_JOURNAL const&) = delete;
    ~BUILD_JOURNAL();

    /// What the journal of an earlier build in this folder shows as running. Lines that were cut off themselves belong
    /// to actions that had not started.
    static std::vector<UNFINISHED_ACTION> left_over(QString const& state_folder);
    static void forget_left_over(QString const& state_folder);

    /// Begins a journal. False with a cause when it cannot be written.
    bool open(QString const& state_folder, QString& error);
    /// Each of these is one write to a file in append mode, so workers may note files as well.
    bool note_start(PLANNED_ACTION const& planned);
    bool note_file(PLANNED_ACTION const& planned, QString const& file);
    bool note_end(PLANNED_ACTION const& planned);
    /// The build is over and left nothing unfinished.
    void close();

private:
    bool append(QByteArray const& line);

    QString path_;
    int descriptor_ = -1;
};

}  // namespace tool
