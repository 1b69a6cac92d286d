// Which files are being written at this moment, kept in a file, so that a build that comes after one that was killed
// knows what that one left half done. A line is appended before an action starts and after it has ended; nothing is
// forced to the disk, because what has reached the kernel survives the end of a process.
#pragma once

#include "host/tool/planner.hpp"

namespace tool {

/// The files that an action may have left behind when it was cut off.
struct UNFINISHED_ACTION {
    QStringList files;
    /// When it started, in milliseconds since 1970.
    qint64 started = 0;
};

/// Removes each of the files, and what is written beside them before it takes their place.
void remove_unfinished_files(QStringList const& files);

/// Removes what in the folders of these files was written under an unfinished name since then, whatever the file is
/// called in the end. Only when no action runs.
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
    bool append(char const* what, PLANNED_ACTION const& planned, QStringList const& files);

    QString path_;
    int descriptor_ = -1;
};

}  // namespace tool
