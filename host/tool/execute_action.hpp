// Runs one action in this process and finds out how it went. Everything a build learns of an action's run is in the
// result, so that whoever schedules actions need not run them itself.
#pragma once

#include "host/tool/action_record.hpp"
#include "host/tool/planner.hpp"

#include <cstdint>
#include <optional>

namespace tool {

struct ACTION_RESULT {
    enum class STATUS { succeeded, failed, interrupted };

    STATUS status = STATUS::failed;
    /// It succeeded, by its own word, and a target that it announced is not there.
    bool made_no_file = false;
    /// The action's own lines, exactly.
    QStringList lines;
    /// What the tool finds out about the cause of a failure by itself; may be empty.
    QString diagnosis;
    /// It failed for want of room, rights or processes: what it is made from may be all right.
    bool surroundings_failed = false;
    /// What ended the action from outside, in half a sentence; empty when it ended by itself.
    QString killed_by;
    /// What libraries wrote past the action, straight to standard error or standard output.
    QStringList library_lines;
    std::int64_t milliseconds = 0;
    /// Of the whole process, while the action ran.
    std::optional<std::uint64_t> peak_bytes;
    /// What the next build has to know of an action that succeeded.
    ACTION_RECORD record;
};

/// `line` receives each line as the action says it. After a failure none of the action's targets is there.
ACTION_RESULT execute_action(PLANNED_ACTION const& planned, FILE_MAP const& files, RULE_CACHE const& rules,
                             std::function<void(QString const&)> const& line);

/// The result of an action that is not run, for this reason.
ACTION_RESULT fail_action(QString const& reason, std::function<void(QString const&)> const& line);

/// Removes whatever there is of a failed action's targets and of the files that it registered, or brings back the
/// versions that version control knows. What the action has reverted itself stays.
void take_back_targets(PLANNED_ACTION const& planned,
                       std::vector<ACTION_INTERFACE::REGISTERED_FILE> const& registered = {});

}  // namespace tool
