// Carries a plan out, one action after another, and tells observers how it goes. What people and machines get to see of
// a build is theirs; what runs when is this file's, and nobody else's.
#pragma once

#include "host/tool/build_state.hpp"
#include "host/tool/execute_action.hpp"

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
    std::int64_t milliseconds = 0;
};

class RUN_OBSERVER {
public:
    virtual ~RUN_OBSERVER() = default;

    virtual void run_started(PLAN const&) {}
    virtual void action_started(PLANNED_ACTION const&) {}
    virtual void line(PLANNED_ACTION const&, QString const&) {}
    virtual void action_finished(PLANNED_ACTION const&, ACTION_RESULT const&) {}
    /// Instead of the two above: what it needs was built and is as before.
    virtual void action_is_up_to_date(PLANNED_ACTION const&) {}
    virtual void run_finished(RUN_COUNTS const&) {}
};

struct RUN_OPTIONS {
    /// Stop at the first failure.
    bool fail_fast = false;
};

/// The plan has no conflicts, and nothing in it is up to date. An action whose needs failed fails too, unless it says
/// that it can do without them. The state learns of every result; the reasons of actions that await their needs are
/// settled in the plan.
RUN_COUNTS run_plan(PLAN& plan, BUILD_SESSION& session, BUILD_STATE& state, RUN_OPTIONS const& options,
                    std::vector<RUN_OBSERVER*> const& observers);

}  // namespace tool
