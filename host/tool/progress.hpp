// The one line at the foot of a terminal that says how far a build is. It is written anew at most ten times a second.
#pragma once

#include "host/tool/runner.hpp"

#include <condition_variable>
#include <thread>

namespace tool {

/// Does nothing where messages do not go to a terminal, or when the console is quiet.
class PROGRESS_LINE : public RUN_OBSERVER {
public:
    explicit PROGRESS_LINE(CONSOLE& console);
    PROGRESS_LINE(PROGRESS_LINE const&) = delete;
    PROGRESS_LINE& operator=(PROGRESS_LINE const&) = delete;
    ~PROGRESS_LINE() override;

    void run_started(PLAN const& plan) override;
    void action_started(PLANNED_ACTION const& planned) override;
    void action_finished(PLANNED_ACTION const& planned, ACTION_RESULT const& result) override;
    void action_is_up_to_date(PLANNED_ACTION const& planned) override;
    void run_finished(RUN_COUNTS const& counts) override;

private:
    void draw_repeatedly();
    QString text() const;
    void stop();

    CONSOLE& console_;
    bool is_active_;
    std::thread thread_;
    std::condition_variable wake_;
    bool ending_ = false;
    // What follows is guarded by the console's lock.
    bool is_drawn_ = false;
    std::size_t total_ = 0;
    std::size_t finished_ = 0;
    std::size_t failed_ = 0;
    PLANNED_ACTION const* running_ = nullptr;
};

}  // namespace tool
