// Carries a plan out in worker processes and tells observers how it goes. What people and machines get to see of a
// build is theirs; what runs when is this file's, and nobody else's.
#pragma once

#include "host/tool/build_journal.hpp"
#include "host/tool/build_state.hpp"
#include "host/tool/execute_action.hpp"

#include <chrono>

namespace tool {

struct RUN_COUNTS {
    std::size_t total = 0;
    std::size_t succeeded = 0;
    /// Of those that succeeded.
    std::size_t made_no_file = 0;
    std::size_t up_to_date = 0;
    std::size_t failed = 0;
    /// Left over by an interruption or after the first failure.
    std::size_t not_run = 0;
    bool interrupted = false;
    /// Of those that failed: not by what they are, but for want of room, rights or processes.
    std::size_t surroundings_failed = 0;
    std::int64_t milliseconds = 0;
};

/// Of several actions that run at the same time, the calls come mixed; those of one action come in the order in which
/// they stand here.
class RUN_OBSERVER {
public:
    virtual ~RUN_OBSERVER() = default;

    virtual void run_started(PLAN const&) {}
    virtual void action_started(PLANNED_ACTION const&) {}
    virtual void line(PLANNED_ACTION const&, QString const&) {}
    virtual void progress(PLANNED_ACTION const&, int /*value*/, int /*maximum*/) {}
    virtual void action_finished(PLANNED_ACTION const&, ACTION_RESULT const&) {}
    /// Instead of the two above: what it needs was built and is as before.
    virtual void action_is_up_to_date(PLANNED_ACTION const&) {}
    virtual void run_finished(RUN_COUNTS const&) {}
    /// At least ten times a second while actions run, for what changes with time alone.
    virtual void time_passed() {}
};

struct RUN_OPTIONS {
    /// Stop at the first failure.
    bool fail_fast = false;
    /// How many actions run at the same time at most. Never more than there are processors.
    int jobs = 1;
    /// Threads of all running actions together.
    int processors = 1;
    /// What the running actions' estimated needs together stay below; one that needs more runs alone.
    std::uint64_t memory = 0;
    /// For each action; none when zero.
    std::chrono::milliseconds timeout{0};
};

/// The plan has no conflicts, nothing in it is up to date, the caller has one thread, and the journal is open. An
/// action whose needs failed fails too, unless it says that it can do without them. The state learns of every result;
/// the reasons of actions that await their needs are settled in the plan.
RUN_COUNTS run_plan(PLAN& plan, BUILD_SESSION& session, BUILD_STATE& state, RUN_OPTIONS const& options,
                    BUILD_JOURNAL& journal, std::vector<RUN_OBSERVER*> const& observers);

}  // namespace tool
