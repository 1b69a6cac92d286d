#include "host/tool/execute_action.hpp"

#include "host/tool/failure_cause.hpp"
#include "host/tool/peak_memory.hpp"
#include "processor/host/paths.hpp"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <exception>

namespace tool {

namespace {

bool is_there(ACTION_INTERFACE::TARGET_FILE const& target) {
    return QFileInfo::exists(target.physical_path);
}

ACTION_INTERFACE::STATUS run(PLANNED_ACTION const& planned, FILE_MAP const& files, RULE_CACHE const& rules,
                             QString& thrown) {
    try {
        return planned.action->run(files, rules);
    } catch (std::exception const& exception) {
        thrown = QStringLiteral("Unexpected error: ") + QString::fromUtf8(exception.what());
    } catch (...) {
        thrown = QStringLiteral("Unexpected error");
    }
    return ACTION_INTERFACE::STATUS_FAILED;
}

}  // namespace

ACTION_RESULT execute_action(PLANNED_ACTION const& planned, FILE_MAP const& files, RULE_CACHE const& rules,
                             std::function<void(QString const&)> const& line) {
    ACTION_RESULT result;
    reset_peak_memory();
    QElapsedTimer clock;
    clock.start();
    planned.action->set_line_listener(line);
    QString thrown;
    ACTION_INTERFACE::STATUS const status = run(planned, files, rules, thrown);
    planned.action->set_line_listener({});
    result.milliseconds = clock.elapsed();
    result.peak_bytes = peak_memory();
    result.lines = planned.action->output_lines();
    if (!thrown.isEmpty()) {
        result.lines.append(thrown);
        line(thrown);
    }

    if (status == ACTION_INTERFACE::STATUS_SUCCEEDED || status == ACTION_INTERFACE::STATUS_SKIPPED) {
        result.status = ACTION_RESULT::STATUS::succeeded;
        for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
            result.made_no_file = result.made_no_file || (!target.temporary && !is_there(target));
        return result;
    }
    // An action with an error never touched its targets, and its announced ones may be another's.
    if (planned.state == PLANNED_ACTION::STATE::run) {
        remove_targets(planned);
        if (planned.action->revert_target_files_if_failed())
            for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
                framework::VERSION_CONTROL::current().revert(target.physical_path);
        for (LOGICAL_PATH const& source : planned.sources) {
            result.diagnosis = why_unreadable(PATHS::physical_path(source));
            if (!result.diagnosis.isEmpty())
                break;
        }
    }
    return result;
}

ACTION_RESULT fail_action(QString const& reason, std::function<void(QString const&)> const& line) {
    ACTION_RESULT result;
    result.lines.append(reason);
    line(reason);
    return result;
}

void remove_targets(PLANNED_ACTION const& planned) {
    for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
        QFile::remove(target.physical_path);
}

}  // namespace tool
