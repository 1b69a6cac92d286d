// Which actions of a plan may run now: each waits for those that it needs, and among those that are free the plan's
// order holds.
#pragma once

#include "host/tool/planner.hpp"

#include <set>

namespace tool {

class SCHEDULE {
public:
    /// The plan outlives this object.
    explicit SCHEDULE(PLAN const& plan);

    /// Places in the plan.
    std::set<std::size_t> const& free_actions() const { return free_; }
    void start(std::size_t action) { free_.erase(action); }
    /// Frees those that waited for it.
    void finish(std::size_t action, bool succeeded);
    std::size_t finished_count() const { return finished_; }

    /// The first need whose failure this action cannot do without; null when there is none.
    PLANNED_ACTION const* failed_need(std::size_t action) const;

private:
    PLAN const& plan_;
    std::vector<std::vector<std::size_t>> waiting_;
    std::vector<std::size_t> open_needs_;
    std::vector<bool> succeeded_;
    std::set<std::size_t> free_;
    std::size_t finished_ = 0;
};

}  // namespace tool
