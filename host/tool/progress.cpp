#include "host/tool/progress.hpp"

#include <chrono>

#include <sys/ioctl.h>
#include <unistd.h>

namespace tool {

namespace {

constexpr std::chrono::milliseconds interval(100);

int terminal_width() {
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

}  // namespace

PROGRESS_LINE::PROGRESS_LINE(CONSOLE& console)
    : console_(console),
      is_active_(console.error_is_terminal() && console.verbosity() != VERBOSITY::quiet) {
}

PROGRESS_LINE::~PROGRESS_LINE() {
    stop();
}

void PROGRESS_LINE::run_started(PLAN const& plan) {
    if (!is_active_)
        return;
    total_ = plan.actions.size();
    console_.set_line_in_progress(
        [this] {
            if (is_drawn_)
                console_.write_raw(QStringLiteral("\r\x1b[K"));
            is_drawn_ = false;
        },
        {});
    thread_ = std::thread([this] { draw_repeatedly(); });
}

void PROGRESS_LINE::action_started(PLANNED_ACTION const& planned) {
    auto const lock = console_.lock();
    running_ = &planned;
}

void PROGRESS_LINE::action_finished(PLANNED_ACTION const&, ACTION_RESULT const& result) {
    auto const lock = console_.lock();
    running_ = nullptr;
    ++finished_;
    failed_ += result.status == ACTION_RESULT::STATUS::failed ? 1 : 0;
}

void PROGRESS_LINE::action_is_up_to_date(PLANNED_ACTION const&) {
    auto const lock = console_.lock();
    ++finished_;
}

void PROGRESS_LINE::run_finished(RUN_COUNTS const&) {
    stop();
}

void PROGRESS_LINE::stop() {
    if (!thread_.joinable())
        return;
    {
        auto const lock = console_.lock();
        ending_ = true;
    }
    wake_.notify_all();
    thread_.join();
    console_.set_line_in_progress({}, {});
}

void PROGRESS_LINE::draw_repeatedly() {
    auto lock = console_.lock();
    QString shown;
    while (!wake_.wait_for(lock, interval, [this] { return ending_; })) {
        QString const now = text();
        if (is_drawn_ && now == shown)
            continue;
        console_.write_raw(QStringLiteral("\r\x1b[K") + now);
        shown = now;
        is_drawn_ = true;
    }
}

QString PROGRESS_LINE::text() const {
    QString line = QStringLiteral("[%1/%2]").arg(finished_).arg(total_);
    if (failed_ > 0)
        line += QStringLiteral(" %1 failed").arg(failed_);
    if (running_) {
        line += u' ' + running_->name;
        int const maximum = running_->action->progress_max();
        if (maximum > 0)
            line += QStringLiteral(" %1%").arg(qint64(100) * running_->action->progress() / maximum);
    }
    // A line that wraps could not be taken back.
    int const width = terminal_width() - 1;
    return line.size() > width ? line.left(std::max(0, width - 3)) + QStringLiteral("...") : line;
}

}  // namespace tool
