// From a project folder to a plan that knows what is up to date: what build, plan and clean have in common.
#pragma once

#include "host/tool/build_state.hpp"

namespace tool {

/// Everything that a command may ask for: project, plan, state. What is missing after `open` has been reported.
struct OPENED_PLAN {
    explicit OPENED_PLAN(CONTEXT& context) : session(context) {}

    BUILD_SESSION session;
    std::optional<PLAN> plan;
    /// There when the plan has no conflicts.
    std::unique_ptr<BUILD_STATE> state;
};

/// `paths` are from the command line and restrict the plan when there are any. With `force`, nothing is up to date.
EXIT_CODE open_plan(CONTEXT& context, OPENED_PLAN& opened, std::vector<std::string> const& paths, bool force);

/// Takes the actions that are up to date out of the plan, before a build.
void drop_up_to_date(PLAN& plan, BUILD_STATE& state);

}  // namespace tool
