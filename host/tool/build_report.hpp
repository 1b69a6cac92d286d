// What a person sees of a build: a block for each action that has something to say, and at the end every failure again
// with its file and first cause. Where nobody watches a progress line, each finished action gets a line of its own.
#pragma once

#include "host/tool/runner.hpp"

namespace tool {

class BUILD_REPORT : public RUN_OBSERVER {
public:
    /// `explains`: say before each action why it runs.
    BUILD_REPORT(CONSOLE& console, bool explains) : console_(console), explains_(explains) {}

    void run_started(PLAN const& plan) override;
    void action_started(PLANNED_ACTION const& planned) override;
    void action_finished(PLANNED_ACTION const& planned, ACTION_RESULT const& result) override;
    void action_is_up_to_date(PLANNED_ACTION const& planned) override;
    void run_finished(RUN_COUNTS const& counts) override;

private:
    struct FAILURE {
        int id;
        QString file;
        QString cause;
    };

    CONSOLE& console_;
    bool explains_;
    std::size_t total_ = 0;
    std::size_t finished_ = 0;
    std::vector<FAILURE> failures_;
};

}  // namespace tool
