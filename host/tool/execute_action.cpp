#include "host/tool/execute_action.hpp"

#include "host/framework/asset_fragment_file.hpp"
#include "host/framework/version_control.hpp"
#include "host/tool/atlas_pages.hpp"
#include "host/tool/database_step.hpp"
#include "host/tool/failure_cause.hpp"
#include "host/tool/file_contents.hpp"
#include "host/tool/memory_estimate.hpp"
#include "host/tool/peak_memory.hpp"
#include "platform/qe/output_root.hpp"
#include "processor/host/paths.hpp"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QStorageInfo>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace tool {

namespace {

std::vector<FILE_STAMP> target_stamps(PLANNED_ACTION const& planned) {
    std::vector<FILE_STAMP> stamps;
    for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
        stamps.push_back(stamp_of(target.physical_path));
    return stamps;
}

/// Why no file can be made in the folder, or in the nearest one above it that exists; nothing when one can.
std::optional<QString> why_unwritable(QString folder) {
    while (!QFileInfo::exists(folder) && QFileInfo(folder).path() != folder)
        folder = QFileInfo(folder).path();
    if (access(QFile::encodeName(folder).constData(), W_OK | X_OK) == 0)
        return {};
    return QStringLiteral("The target folder %1 cannot be written: %2")
        .arg(folder, QString::fromLocal8Bit(std::strerror(errno)));
}

/// Opens the targets in version control. Nothing, or why one cannot be written or the action may not run.
std::optional<QString> prepare_targets(PLANNED_ACTION const& planned, ACTION_RESULT& result) {
    // It may have come since the plan was made.
    if (QString const file = working_file_in_the_way(planned); !file.isEmpty())
        return refusal_of_file_in_the_way(file);
    for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets) {
        if (auto refusal = why_unwritable(QFileInfo(target.physical_path.text()).path())) {
            result.surroundings_failed = true;
            return refusal;
        }
        if (auto refusal = framework::VERSION_CONTROL::current().prepare_write(target.physical_path))
            return refusal;
    }
    return {};
}

/// A database that has gone takes the fragment that declared it with it. Nothing, or why the fragment has to stay.
std::optional<QString> remove_left_fragment(PLANNED_ACTION const& planned) {
    for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets) {
        QString const fragment = database_fragment(target.physical_path);
        if (!planned.is_last_step || QFileInfo::exists(target.physical_path) || !QFileInfo::exists(fragment))
            continue;
        if (auto refusal = framework::VERSION_CONTROL::current().remove(PHYSICAL_PATH(fragment)))
            return refusal;
        if (std::string cause; !QE::remove_file(QFile::encodeName(fragment).toStdString(), cause))
            return QStringLiteral("Failed to remove '%1': %2").arg(fragment, QString::fromLocal8Bit(cause.c_str()));
    }
    return {};
}

/// What is wrong with an action that says that it succeeded; empty when nothing is. Some actions take the existence of
/// their target for their success, so a file of an earlier build must not stand in for one that was not written.
QString false_success(PLANNED_ACTION const& planned, std::vector<FILE_STAMP> const& before,
                      WRITTEN_FILES const& written) {
    if (planned.action->version_control_failed())
        return QStringLiteral("Version control refused a file");
    std::vector<FILE_STAMP> const after = target_stamps(planned);
    for (std::size_t i = 0; i < after.size(); ++i) {
        ACTION_INTERFACE::TARGET_FILE const& target = planned.targets[static_cast<int>(i)];
        // A fragment that has to say what it says already is left alone by its writer.
        bool const is_written = written.contains(QDir::cleanPath(target.physical_path));
        if (!target.temporary && !is_written && after[i].exists() && after[i] == before[i])
            return QStringLiteral("The target was not written: ") + target.physical_path.text();
        // A database that has nothing to hold is gone without a word; else it could not be saved.
        if (planned.is_last_step && !after[i].exists() && !planned.action->output_lines().isEmpty())
            return QStringLiteral("The target was not made: ") + target.physical_path.text();
        if (planned.is_last_step && !after[i].exists() && before[i].exists())
            if (auto refusal = framework::VERSION_CONTROL::current().remove(target.physical_path))
                return *refusal;
        if (is_older_file(target) && after[i].exists())
            return QStringLiteral("The file of older versions was not removed: ") + target.physical_path.text();
    }
    if (QString const page = missing_page(planned); !page.isEmpty())
        return QStringLiteral("The target was not made: ") + page;
    return remove_left_fragment(planned).value_or(QString());
}

/// Whether the action itself did away with a file that it had announced: one that an earlier build left over.
bool was_removed(PLANNED_ACTION const& planned, ACTION_INTERFACE::TARGET_FILE const& target) {
    auto const& registered = planned.action->registered_files();
    return std::any_of(registered.begin(), registered.end(), [&](ACTION_INTERFACE::REGISTERED_FILE const& file) {
        return file.kind == ACTION_INTERFACE::REGISTERED_FILE::KIND::removed && file.path == target.physical_path;
    });
}

// Actions that cannot write say so in fixed words, and what they wrote is gone again when the disk is looked at. So
// what there is room for is compared with the most that they had to write: 32 bits a texel, and the levels.
void look_at_room(PLANNED_ACTION const& planned, ACTION_RESULT& result) {
    std::uint64_t texels = 0;
    for (LOGICAL_PATH const& source : planned.sources)
        texels += announced_texels(PATHS::physical_path(source)).value_or(0);
    std::uint64_t const most = texels / 3 * 16;
    QStorageInfo const disk(PATHS::working_data().text());
    auto const left = disk.isValid() ? static_cast<std::uint64_t>(disk.bytesAvailable()) : most;
    rlimit allowed = {};
    std::uint64_t const longest = getrlimit(RLIMIT_FSIZE, &allowed) == 0 ? allowed.rlim_cur : RLIM_INFINITY;
    if (left < most)
        result.diagnosis = QStringLiteral("the disk has only %1 KB left").arg(left / 1024);
    else if (longest < most)
        result.diagnosis = QStringLiteral("a file may have only %1 KB").arg(longest / 1024);
    result.surroundings_failed = !result.diagnosis.isEmpty();
}

ACTION_INTERFACE::STATUS run(PLANNED_ACTION const& planned, FILE_MAP const& files, RULE_CACHE const& rules,
                             QString& thrown) {
    try {
        ACTION_INTERFACE::STATUS const status = planned.action->run(files, rules);
        QTSHARED::ASSET_GRAPH* const graph = ACTION_INTERFACE::s_asset_graph;
        if (graph != nullptr && status == ACTION_INTERFACE::STATUS_FAILED)
            graph->take_unwritten();
        if (graph == nullptr || framework::save_added_fragments(*graph, *planned.action, files, thrown))
            return status;
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
    framework::READ_RECORDER recorder;
    WRITTEN_FILES_RECORDER const writes;
    ACTION_INTERFACE::STATUS status = ACTION_INTERFACE::STATUS_FAILED;
    std::vector<FILE_STAMP> const before = target_stamps(planned);
    if (auto const refusal = prepare_targets(planned, result))
        own_line = *refusal;
    else
        status = run(planned, files, rules, own_line);
    bool const succeeded = status == ACTION_INTERFACE::STATUS_SUCCEEDED || status == ACTION_INTERFACE::STATUS_SKIPPED;
    if (succeeded)
        own_line = false_success(planned, before, writes.files());
    planned.action->set_line_listener({});
    result.record.reads = recorder.take();
    result.record.written = writes.files();
    for (ACTION_INTERFACE::REGISTERED_FILE const& file : planned.action->registered_files())
        result.record.registered.push_back(file);
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
                                                          !stamp_of(target.physical_path).exists());
        return result;
    }
    // One in error never touched anything.
    if (planned.state == PLANNED_ACTION::STATE::run) {
        take_back_targets(planned, result.record.registered);
        for (LOGICAL_PATH const& source : planned.sources) {
            result.diagnosis = why_unreadable(PATHS::physical_path(source));
            if (!result.diagnosis.isEmpty())
                break;
        }
        if (result.diagnosis.isEmpty() && !result.surroundings_failed)
            look_at_room(planned, result);
    }
    return result;
}

ACTION_RESULT fail_action(QString const& reason, std::function<void(QString const&)> const& line) {
    ACTION_RESULT result;
    result.lines.append(reason);
    line(reason);
    return result;
}

void take_back_targets(PLANNED_ACTION const& planned,
                       std::vector<ACTION_INTERFACE::REGISTERED_FILE> const& registered) {
    using KIND = ACTION_INTERFACE::REGISTERED_FILE::KIND;
    QSet<QString> files;
    for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
        if (!is_older_file(target))
            files.insert(target.physical_path);
    for (ACTION_INTERFACE::REGISTERED_FILE const& file : registered) {
        if (file.kind == KIND::added)
            files.insert(file.path);
        else if (file.kind == KIND::reverted)
            files.remove(file.path);
    }
    for (QString const& file : qAsConst(files))
        QE::remove_file(QFile::encodeName(file).toStdString());
    if (planned.action->revert_target_files_if_failed())
        for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
            framework::VERSION_CONTROL::current().revert(target.physical_path);
    // The action has failed already; why its fragment has to stay as well is told by the next build.
    static_cast<void>(remove_left_fragment(planned));
}

}  // namespace tool
