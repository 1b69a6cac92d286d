#include "host/tool/schedule.hpp"

namespace tool {

SCHEDULE::SCHEDULE(PLAN const& plan)
    : plan_(plan),
      waiting_(plan.actions.size()),
      open_needs_(plan.actions.size()),
      succeeded_(plan.actions.size(), false) {
    for (std::size_t i = 0; i < plan.actions.size(); ++i) {
        open_needs_[i] = plan.actions[i].needs.size();
        for (PLANNED_ACTION::NEED const& need : plan.actions[i].needs)
            waiting_[need.action].push_back(i);
        if (open_needs_[i] == 0)
            free_.insert(free_.end(), i);
    }
}

void SCHEDULE::finish(std::size_t action, bool succeeded) {
    free_.erase(action);
    succeeded_[action] = succeeded;
    ++finished_;
    for (std::size_t const other : waiting_[action])
        if (--open_needs_[other] == 0)
            free_.insert(other);
}

PLANNED_ACTION const* SCHEDULE::failed_need(std::size_t action) const {
    PLANNED_ACTION const& planned = plan_.actions[action];
    if (!planned.action->auto_fail_if_dependency_failed())
        return nullptr;
    for (PLANNED_ACTION::NEED const& need : planned.needs)
        if (!need.optional && !succeeded_[need.action])
            return &plan_.actions[need.action];
    return nullptr;
}

}  // namespace tool
