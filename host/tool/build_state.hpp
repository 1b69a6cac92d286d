// What earlier builds left behind: for every action what it read and made. Answers whether an action is up to date and
// why not, takes in the results of this build, and knows the files that no action makes any more. It belongs to the
// process that schedules, whichever process runs the actions.
#pragma once

#include "host/tool/action_comparison.hpp"
#include "host/tool/execute_action.hpp"
#include "host/tool/state_store.hpp"

#include <chrono>

namespace tool {

class BUILD_STATE {
public:
    /// Opens nothing yet. Both are borrowed.
    BUILD_STATE(BUILD_SESSION& session, CONSOLE& console);
    BUILD_STATE(BUILD_STATE const&) = delete;
    BUILD_STATE& operator=(BUILD_STATE const&) = delete;
    ~BUILD_STATE();

    /// Reads the state and finds each action's own part of it. The plan is whole, not restricted to some paths, or the
    /// rest of the project would be taken for gone.
    void open(PLAN const& plan);

    /// Why the action has to run, as things are now; nothing when it is up to date.
    std::optional<QString> reason_to_run(PLANNED_ACTION const& planned);
    /// For an action that awaited its needs, when they are done: whether it is up to date after all. It is then kept;
    /// else its reason is set anew.
    bool is_up_to_date_now(PLANNED_ACTION& planned);
    /// The action need not run: what its earlier run told the asset graph is told again.
    void keep(PLANNED_ACTION const& planned);

    /// The action is about to run. A source that changes from now on has not been read for certain.
    void starting(PLANNED_ACTION const& planned);
    /// The action ran and succeeded.
    void remember(PLANNED_ACTION const& planned, ACTION_RESULT const& result);
    /// The action ran, and ended so that it has to run again.
    void forget(PLANNED_ACTION const& planned, RECORDED_ACTION::END end);
    /// Whether another action of the plan, as it ran last, has made this file without announcing it.
    bool is_registered_by_another(PLANNED_ACTION const& planned, QString const& file);
    /// Whether the file comes from this action as it ran last, or is as some other action left it. `path` is logical.
    bool is_made_by_build(PLANNED_ACTION const& planned, QString const& path);
    /// The end of a build: what is still to be written is. An error says so if that failed.
    void finish();
    /// Whether all could be read and written down so far.
    bool is_sound() const { return store_.error().isEmpty(); }

    struct STALE_TARGET {
        LOGICAL_PATH path;
        FILE_CONTENTS contents;
    };
    /// Files that are as an action made them and that no action makes now, sorted. Asked for before or after a build.
    std::vector<STALE_TARGET> stale_targets();
    /// Every file that is as an action left it, beyond what actions announce: stale ones, and those that were only
    /// registered. Sorted.
    std::vector<LOGICAL_PATH> known_targets();

private:
    struct ROW {
        std::int64_t id = 0;
        QString key;
        QByteArray content;
        /// Some action of the plan is this one.
        bool is_claimed = false;
    };
    /// An action's place in the state.
    struct CLAIM {
        QString key;
        /// Of its own row.
        std::optional<std::size_t> row;
        /// Of the row to compare it with: its own, or that of what it seems to have been under other targets.
        std::optional<std::size_t> compared;
    };
    struct SNAPSHOT {
        FILE_STAMP stamp;
        /// While the stamp was not settled.
        std::optional<CONTENT_HASH> hash;
    };
    struct UNSETTLED {
        std::size_t row;
        RECORDED_ACTION action;
        /// Before that its files are not all settled.
        std::chrono::steady_clock::time_point next_look = {};
    };

    void read_rows();
    void identify_plugin();
    void claim(PLAN const& plan);
    void find_former(PLAN const& plan);
    ACTION_SETTING const* setting(std::int64_t id) const;
    std::int64_t setting_id(ACTION_SETTING const& setting);
    std::vector<framework::RULE_READ> all_rule_reads(PLANNED_ACTION const& planned,
                                                     framework::READS const& reads) const;
    std::vector<RECORDED_FILE> source_contents(PLANNED_ACTION const& planned);
    FILE_CONTENTS target_contents(QString const& path, WRITTEN_FILES const& written_files);
    void store(PLANNED_ACTION const& planned, RECORDED_ACTION const& action);
    void write(std::size_t row, RECORDED_ACTION const& action);
    void leave_behind(RECORDED_ACTION const& former, RECORDED_ACTION const& now);
    void settle(bool wait);
    void drop_what_is_gone();
    void drop_unused_settings();
    QSet<QString> current_targets() const;

    BUILD_SESSION& session_;
    CONSOLE& console_;
    STATE_STORE store_;
    FILE_LOOKER looker_;
    CONTENT_HASH plugin_;
    std::optional<ACTION_COMPARISON> comparison_;

    std::vector<ROW> rows_;
    QHash<QString, std::size_t> rows_by_key_;
    QHash<ACTION_INTERFACE const*, CLAIM> claims_;
    std::map<std::int64_t, ACTION_SETTING> settings_;
    QHash<QByteArray, std::int64_t> setting_ids_;
    std::vector<STATE_STORE::RECORD> leftovers_;
    /// The plug-in's, as far as they are not yet in the store.
    std::vector<STATE_STORE::RECORD> new_libraries_;
    /// Rows whose files were read again and found to be as they were.
    std::map<std::size_t, RECORDED_ACTION> refreshed_;
    std::vector<UNSETTLED> unsettled_;
    /// What up-to-date actions told the asset graph.
    QHash<ACTION_INTERFACE const*, std::vector<framework::ASSET_CHANGE>> asset_changes_;
    QHash<ACTION_INTERFACE const*, std::vector<SNAPSHOT>> snapshots_;
    /// Rows of actions that registered a file beyond what they announced, by the file's logical path.
    std::optional<QMultiHash<QString, std::size_t>> registered_;
    std::int64_t next_id_ = 1;
};

}  // namespace tool
