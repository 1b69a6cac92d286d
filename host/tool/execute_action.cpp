#include "host/tool/execute_action.hpp"

#include "host/framework/version_control.hpp"
#include "host/tool/failure_cause.hpp"
#include "host/tool/peak_memory.hpp"
#include "processor/host/paths.hpp"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <exception>
#include <vector>

namespace tool {

namespace {

/// Tells one writing of a file from another: the time stamp and size of what is there, or nothing.
struct FILE_STATE {
    QDateTime modified;
    qint64 size = -1;

    bool exists() const { return size >= 0; }
    friend bool operator==(FILE_STATE const&, FILE_STATE const&) = default;
};

std::vector<FILE_STATE> target_states(PLANNED_ACTION const& planned) {
    std::vector<FILE_STATE> states;
    for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets) {
        QFileInfo const info(target.physical_path);
        states.push_back(info.exists() ? FILE_STATE{info.lastModified(), info.size()} : FILE_STATE{});
    }
    return states;
}

/// Opens the targets in version control. Nothing, or why one cannot be written.
std::optional<QString> prepare_targets(PLANNED_ACTION const& planned) {
    for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets) {
        if (auto refusal = framework::VERSION_CONTROL::current().prepare_write(target.physical_path))
            return refusal;
    }
    return {};
}

/// What is wrong with an action that says that it succeeded; empty when nothing is. Some actions take the existence of
/// their target for their success, so a file of an earlier build must not stand in for one that was not written.
QString false_success(PLANNED_ACTION const& planned, std::vector<FILE_STATE> const& before) {
    if (planned.action->version_control_failed())
        return QStringLiteral("Version control refused a file");
    std::vector<FILE_STATE> const after = target_states(planned);
    for (std::size_t i = 0; i < after.size(); ++i) {
        ACTION_INTERFACE::TARGET_FILE const& target = planned.targets[static_cast<int>(i)];
        if (!target.temporary && after[i].exists() && after[i] == before[i])
            return QStringLiteral("The target was not written: ") + target.physical_path.text();
    }
    return {};
}

/// Whether the action itself did away with a file that it had announced: one that an earlier build left over.
bool was_removed(PLANNED_ACTION const& planned, ACTION_INTERFACE::TARGET_FILE const& target) {
    auto const& registered = planned.action->registered_files();
    return std::any_of(registered.begin(), registered.end(), [&](ACTION_INTERFACE::REGISTERED_FILE const& file) {
        return file.kind == ACTION_INTERFACE::REGISTERED_FILE::KIND::removed && file.path == target.physical_path;
    });
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
    QString own_line;
    ACTION_INTERFACE::STATUS status = ACTION_INTERFACE::STATUS_FAILED;
    std::vector<FILE_STATE> const before = target_states(planned);
    if (auto const refusal = prepare_targets(planned))
        own_line = *refusal;
    else
        status = run(planned, files, rules, own_line);
    bool const succeeded = status == ACTION_INTERFACE::STATUS_SUCCEEDED || status == ACTION_INTERFACE::STATUS_SKIPPED;
    if (succeeded)
        own_line = false_success(planned, before);
    planned.action->set_line_listener({});
    result.milliseconds = clock.elapsed();
    result.peak_bytes = peak_memory();
    result.lines = planned.action->output_lines();
    if (!own_line.isEmpty()) {
        result.lines.append(own_line);
        line(own_line);
    }

    if (succeeded && own_line.isEmpty()) {
        result.status = ACTION_RESULT::STATUS::succeeded;
        for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
            result.made_no_file = result.made_no_file || (!target.temporary && !was_removed(planned, target) &&
                                                          !QFileInfo::exists(target.physical_path));
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
