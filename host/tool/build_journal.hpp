// Which files are being written at this moment, kept in a file, so that a build that comes after one that was killed
// knows what that one left half done. A line is appended before an action starts and after it has ended; nothing is
// forced to the disk, because what has reached the kernel survives the end of a process. The file names itself in its
// first line, by what nobody can know who did not see it being made: one that came with a project, or was copied,
// counts for nothing.
#pragma once

#include "host/tool/journal_lines.hpp"
#include "host/tool/planner.hpp"

#include <limits>

namespace tool {

/// What the action announces to write and may leave half done, with what stands there now.
UNFINISHED_ACTION files_at_risk(PLANNED_ACTION const& planned);
/// The file, and the one beside it that its bytes go to first.
std::vector<FILE_AT_RISK> files_at_risk(QString const& file);

/// What the action made and left. In the raw folder, where people keep their own files, that is what it said that it
/// made, as it was then; elsewhere also what has changed at its places since it started. What changed after
/// `last_sign_of_life` (nanoseconds since 1970) was somebody else, and so was whatever stands there unchanged.
QStringList unfinished_files(UNFINISHED_ACTION const& action, std::int64_t last_sign_of_life);
void remove_unfinished_files(UNFINISHED_ACTION const& action,
                             std::int64_t last_sign_of_life = std::numeric_limits<std::int64_t>::max());

class BUILD_JOURNAL {
public:
    BUILD_JOURNAL() = default;
    BUILD_JOURNAL(BUILD_JOURNAL const&) = delete;
    BUILD_JOURNAL& operator=(BUILD_JOURNAL const&) = delete;
    ~BUILD_JOURNAL();

    struct LEFT_OVER {
        std::vector<UNFINISHED_ACTION> actions;
        /// Nanoseconds since 1970.
        std::int64_t last_sign_of_life = 0;
        /// There is a journal, and no build that ran here wrote it: nothing that it says counts.
        bool is_foreign = false;
    };

    /// What the journal of an earlier build in this folder shows as running. Lines that were cut off themselves belong
    /// to actions that had not started.
    static LEFT_OVER left_over(QString const& state_folder);
    static void forget_left_over(QString const& state_folder);

    /// Begins a journal. False with a cause when it cannot be written.
    bool open(QString const& state_folder, QString& error);
    /// Each of these is one write to a file in append mode, so workers may note files as well.
    bool note_start(PLANNED_ACTION const& planned, UNFINISHED_ACTION const& unfinished);
    bool note_files(PLANNED_ACTION const& planned, std::vector<FILE_AT_RISK> const& files);
    bool note_end(PLANNED_ACTION const& planned);
    /// Called at least once a second while an action runs.
    void note_life();
    /// The build is over and left nothing unfinished.
    void close();

private:
    bool append(QByteArray const& line);

    QString state_folder_;
    int descriptor_ = -1;
};

}  // namespace tool
