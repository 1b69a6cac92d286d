#include "host/tool/build_report.hpp"

#include "host/framework/printable.hpp"

#include <algorithm>

namespace tool {

namespace {

// Whether the lines of an action that succeeded say more than that it did.
bool says_more_than_done(QStringList const& lines) {
    return !lines.isEmpty() && lines != QStringList(QStringLiteral("Done."));
}

bool begins_with_any(QString const& text, std::initializer_list<char const*> beginnings) {
    return std::any_of(beginnings.begin(), beginnings.end(), [&](char const* beginning) {
        return text.startsWith(QLatin1String(beginning), Qt::CaseInsensitive);
    });
}

// An action stops where it fails, so the cause stands last: behind warnings of what it met on its way, and before lines
// which only say that it failed. Those are told where there is nothing else.
QString cause_among(QStringList const& lines) {
    QString next_best = QStringLiteral("failed without a word");
    bool has_next_best = false;
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        if (begins_with_any(*line, {"Saving file: ", "Done."}))
            continue;
        if (!begins_with_any(*line, {"Warning", "Failed To Combine Files", "Failed to convert!",
                                     "Failed in gathering the rules", "Failed to compress ", "The target was not ",
                                     "Version control refused a file"}))
            return *line;
        if (!has_next_best)
            next_best = *line;
        has_next_best = true;
    }
    return next_best;
}

}  // namespace

void BUILD_REPORT::run_started(PLAN const& plan) {
    total_ = plan.actions.size();
}

void BUILD_REPORT::action_started(PLANNED_ACTION const& planned) {
    if (explains_)
        console_.message(QStringLiteral("%1: %2").arg(
            planned.name, framework::printable(planned.error.isEmpty() ? planned.reason : planned.error)));
}

void BUILD_REPORT::action_finished(PLANNED_ACTION const& planned, ACTION_RESULT const& result) {
    ++finished_;
    bool const failed = result.status == ACTION_RESULT::STATUS::failed;
    bool const has_block = failed || result.made_no_file || says_more_than_done(result.lines) ||
                           !result.library_lines.isEmpty() || console_.verbosity() == VERBOSITY::verbose;
    if (failed) {
        QString cause = result.killed_by.isEmpty() ? cause_among(result.lines) : result.killed_by;
        if (!result.diagnosis.isEmpty())
            cause += QStringLiteral(" [%1]").arg(result.diagnosis);
        std::optional<LOGICAL_PATH> const file = subject_of(planned);
        failures_.push_back({planned.id, file ? shown_file(*file) : planned.name, framework::printable(cause)});
    }
    if (console_.verbosity() == VERBOSITY::quiet ? !failed : console_.error_is_terminal() && !has_block)
        return;

    QString status = failed                ? console_.paint(COLOR::red, QStringLiteral("FAILED"))
                     : result.made_no_file ? console_.paint(COLOR::yellow, QStringLiteral("made no file"))
                                           : console_.paint(COLOR::green, QStringLiteral("done"));
    if (result.status == ACTION_RESULT::STATUS::interrupted)
        status = console_.paint(COLOR::yellow, QStringLiteral("interrupted"));
    QString block = QStringLiteral("[%1/%2] %3: %4").arg(finished_).arg(total_).arg(status, planned.name);
    if (has_block)
        for (QString const& line : result.library_lines + result.lines)
            block += QStringLiteral("\n") + framework::printable(line);
    console_.message(block);
}

void BUILD_REPORT::action_is_up_to_date(PLANNED_ACTION const& planned) {
    ++finished_;
    if (console_.verbosity() == VERBOSITY::verbose)
        console_.message(QStringLiteral("[%1/%2] up to date: %3").arg(finished_).arg(total_).arg(planned.name));
}

void BUILD_REPORT::run_finished(RUN_COUNTS const& counts) {
    if (!failures_.empty()) {
        // Actions end in the order that chance gives; the list is the same each time.
        std::sort(failures_.begin(), failures_.end(),
                  [](FAILURE const& left, FAILURE const& right) { return left.id < right.id; });
        QString list = console_.paint(COLOR::red, QStringLiteral("Failed:"));
        for (FAILURE const& failure : failures_)
            list += QStringLiteral("\n  %1: %2").arg(failure.file, failure.cause);
        console_.message(list);
    }
    if (console_.verbosity() == VERBOSITY::quiet)
        return;
    QString summary = QStringLiteral("%1 built").arg(counts.succeeded - counts.made_no_file);
    if (counts.made_no_file > 0)
        summary += QStringLiteral(", %1 made no file").arg(counts.made_no_file);
    if (counts.up_to_date > 0)
        summary += QStringLiteral(", %1 up to date").arg(counts.up_to_date);
    summary += QStringLiteral(", %1 failed").arg(counts.failed);
    if (counts.not_run > 0)
        summary += QStringLiteral(", %1 not run").arg(counts.not_run);
    summary += QStringLiteral(" in %1 s").arg(static_cast<double>(counts.milliseconds) / 1000, 0, 'f', 1);
    console_.message(counts.interrupted ? QStringLiteral("Interrupted: ") + summary : summary);
}

}  // namespace tool
