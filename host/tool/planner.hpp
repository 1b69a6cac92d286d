// What a build is going to do: every action with its files, in an order in which each comes after what it needs, and
// with everything that forbids it found before any work starts.
#pragma once

#include <QSet>

#include "host/framework/diagnostic.hpp"
#include "host/tool/build_session.hpp"

namespace tool {

struct PLANNED_ACTION {
    enum class STATE { run, up_to_date, error };

    struct NEED {
        /// Place in the plan.
        std::size_t action;
        bool optional;
    };

    /// Counts from 1 in the order in which processors made the actions.
    int id = 0;
    /// Borrowed from the session.
    ACTION_INTERFACE* action = nullptr;
    /// The detailed name.
    QString name;
    QVector<LOGICAL_PATH> sources;
    QVector<ACTION_INTERFACE::TARGET_FILE> targets;
    std::vector<NEED> needs;
    STATE state = STATE::run;
    /// Why it runs; empty when it need not.
    QString reason;
    /// Something that it needs runs too. What that makes decides whether this one really runs.
    bool awaits_needs = false;
    /// Why it cannot succeed: the host's refusal, or what the processor found wrong.
    QString error;
    /// The host refuses to run it at all.
    bool refused = false;
    /// It reads whatever the others have made, so it runs after all of them.
    bool is_last_step = false;
};

/// Asks the action what it reads and makes as things stand. Files that it reads without listing them are among the
/// sources; an action in error makes nothing.
void ask_for_files(PLANNED_ACTION& planned, BUILD_SESSION& session);

/// Whether the target is the asset-graph fragment of a texture array among the action's sources, in its folder.
/// Fragments stand there even in the raw folder, where nothing else is ever written.
bool is_fragment_beside_source(PLANNED_ACTION const& planned, ACTION_INTERFACE::TARGET_FILE const& target);

/// Whether the target is a file of the raw folder that was there before, and that the action takes away when it
/// succeeds. Nobody else may.
bool is_older_file(ACTION_INTERFACE::TARGET_FILE const& target);

/// The file by which people know the action: its first source, or for the last step, which reads everything, what it
/// makes.
std::optional<LOGICAL_PATH> subject_of(PLANNED_ACTION const& planned);

struct PLAN {
    /// The raw files that some action of the project reads, whether that action runs or not.
    QSet<QString> raw_sources;
    /// In the order in which they run.
    std::vector<PLANNED_ACTION> actions;
    /// What makes the plan as a whole impossible: two actions with one target, actions that wait for each other. Each
    /// is one message, maybe of several lines. A build does not start while there is any.
    std::vector<QString> conflicts;
    /// Actions that were taken out because they are up to date.
    std::size_t up_to_date = 0;
};

PLAN make_plan(BUILD_SESSION& session);

/// Keeps the actions that read a file at or below one of these logical paths, and the actions that those need. The last
/// step is never kept.
void restrict_plan(PLAN& plan, std::vector<QString> const& paths);

/// A project path as people see it: where the file lies, relative to the current folder when it is in it.
QString shown_file(LOGICAL_PATH const& path);

/// Keeps the actions for which `is_wanted` holds, in their order, and no needs of others.
void keep_actions(PLAN& plan, std::vector<bool> const& is_wanted);

}  // namespace tool
