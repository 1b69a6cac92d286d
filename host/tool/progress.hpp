// The one line at the foot of a terminal that says how far a build is. It is written anew at most ten times a second.
#pragma once

#include "host/tool/runner.hpp"

#include <chrono>
#include <vector>

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
    void progress(PLANNED_ACTION const& planned, int value, int maximum) override;
    void action_finished(PLANNED_ACTION const& planned, ACTION_RESULT const& result) override;
    void action_is_up_to_date(PLANNED_ACTION const& planned) override;
    void run_finished(RUN_COUNTS const& counts) override;
    void time_passed() override;

private:
    using CLOCK = std::chrono::steady_clock;

    struct RUNNING {
        PLANNED_ACTION const* planned;
        /// Of 100; below 0 for actions that do not tell.
        int percent;
    };

    QString text() const;
    QString time_left() const;
    void clear();
    void stop();

    CONSOLE& console_;
    bool is_active_;
    bool is_drawn_ = false;
    QString drawn_;
    CLOCK::time_point begin_;
    CLOCK::time_point last_;
    std::size_t total_ = 0;
    std::size_t finished_ = 0;
    std::size_t failed_ = 0;
    /// In the order in which they started.
    std::vector<RUNNING> running_;
};

/// The text, cut so that a terminal shows it in so many columns: wide characters take two, and what would move the
/// cursor shows as "?".
QString cut_to_width(QString const& text, int columns);

}  // namespace tool
