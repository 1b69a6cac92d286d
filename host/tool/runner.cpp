// One loop that waits for whatever comes first: a message of a worker, its end, a signal, or a moment. The tool itself
// has one thread and no decoder, so that nothing in it can hang or crash on a file.
#include "host/tool/runner.hpp"

#include "host/tool/interrupt.hpp"
#include "host/tool/memory_estimate.hpp"
#include "host/tool/schedule.hpp"
#include "host/tool/worker.hpp"

#include <QDir>
#include <QElapsedTimer>

#include <algorithm>
#include <list>
#include <map>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include <poll.h>

namespace tool {

namespace {

using CLOCK = std::chrono::steady_clock;

constexpr std::chrono::milliseconds tick(100);
// What an interrupted action gets to end by itself.
constexpr std::chrono::milliseconds grace(500);
// How many actions may overtake one that waits for memory before the others wait for it, for each job.
constexpr int overtakings = 4;
// How far ahead the search for an action that fits into memory goes.
constexpr int search_depth = 64;

struct RUNNING_ACTION {
    std::size_t action = 0;
    int threads = 1;
    std::uint64_t memory = 0;
    CLOCK::time_point begin;
    /// What it may leave behind when it is cut off.
    UNFINISHED_ACTION unfinished;
    /// Said so far.
    QStringList lines;
    /// Why the tool ended its worker.
    QString killed_by;
};

struct POOL_WORKER {
    std::unique_ptr<WORKER> process;
    std::optional<RUNNING_ACTION> running;
    /// How many of the asset graph's changes it knows of.
    int known_changes = 0;
};

// What the two OpenMP libraries say before they end the process.
bool lacked_threads(QStringList const& library_lines) {
    QString const text = library_lines.join(u'\n');
    return text.contains(QLatin1String("libgomp: Thread creation failed")) ||
           text.contains(QLatin1String("System unable to allocate necessary resources for OMP thread"));
}

class BUILD_RUN {
public:
    BUILD_RUN(PLAN& plan, BUILD_SESSION& session, BUILD_STATE& state, RUN_OPTIONS const& options,
              BUILD_JOURNAL& journal, std::vector<RUN_OBSERVER*> const& observers)
        : plan_(plan),
          session_(session),
          state_(state),
          options_(options),
          journal_(journal),
          task_{plan, session, journal},
          observers_(observers),
          schedule_(plan),
          most_workers_(static_cast<std::size_t>(std::clamp(options.jobs, 1, options.processors))) {}

    RUN_COUNTS run() {
        QElapsedTimer clock;
        clock.start();
        counts_.total = plan_.actions.size();
        counts_.up_to_date = plan_.up_to_date;
        // The graph as it is now goes to the workers with the fork.
        session_.asset_graph().take_changes();
        tell([&](RUN_OBSERVER& observer) { observer.run_started(plan_); });
        while (true) {
            look_at_signals();
            repeat_actions();
            start_actions();
            if (running_count() == 0)
                break;
            wait();
        }
        workers_.clear();
        counts_.not_run += plan_.actions.size() - schedule_.finished_count();
        state_.finish();
        counts_.interrupted = signals_ > 0;
        counts_.milliseconds = clock.elapsed();
        tell([&](RUN_OBSERVER& observer) { observer.run_finished(counts_); });
        return counts_;
    }

private:
    template <typename CALL>
    void tell(CALL const& call) {
        for (RUN_OBSERVER* const observer : observers_)
            call(*observer);
    }

    std::size_t running_count() const {
        return static_cast<std::size_t>(std::count_if(
            workers_.begin(), workers_.end(), [](POOL_WORKER const& worker) { return worker.running.has_value(); }));
    }

    bool is_ending() const { return signals_ > 0 || (options_.fail_fast && counts_.failed > 0); }

    void start_actions() {
        // An action that started while little else could may hold more than one worker's share of threads.
        while (!is_ending() && running_count() < most_workers_ && threads_in_use() < options_.processors) {
            std::optional<std::size_t> const next = choose();
            if (!next)
                return;
            PLANNED_ACTION const& planned = plan_.actions[*next];
            if (std::optional<QString> const reason = why_not_run(*next)) {
                tell([&](RUN_OBSERVER& observer) { observer.action_started(planned); });
                finish(*next, fail_action(*reason, line_to_observers(planned)));
            } else if (state_.is_up_to_date_now(plan_.actions[*next])) {
                // What it did to the graph when it ran last holds for this build too.
                changes_ += session_.asset_graph().take_changes();
                schedule_.finish(*next, true);
                ++counts_.up_to_date;
                tell([&](RUN_OBSERVER& observer) { observer.action_is_up_to_date(planned); });
            } else {
                start(*next);
            }
        }
    }

    // Actions whose worker got fewer threads from the system than it had asked for, which ended it: with one, it needs
    // none from the system.
    void repeat_actions() {
        std::vector<RUNNING_ACTION> waiting;
        for (RUNNING_ACTION& running : std::exchange(to_repeat_, {})) {
            std::size_t const action = running.action;
            running.threads = 1;
            running.lines.clear();
            running.begin = CLOCK::now();
            QString error;
            if (give(running, error))
                continue;
            if (running_count() > 0)
                waiting.push_back(running);
            else
                finish_without_worker(action, error);
        }
        to_repeat_ = std::move(waiting);
    }

    std::optional<QString> why_not_run(std::size_t action) const {
        PLANNED_ACTION const& planned = plan_.actions[action];
        if (planned.refused)
            return planned.error;
        if (PLANNED_ACTION const* const need = schedule_.failed_need(action))
            return QStringLiteral("Not run: it needs \"%1\", which failed").arg(need->name);
        return {};
    }

    // The first free action, or the first that fits into what memory the others leave.
    std::optional<std::size_t> choose() {
        int searched = 0;
        for (std::size_t const action : schedule_.free_actions()) {
            if (why_not_run(action) || memory_in_use() == 0 || memory_in_use() + need_of(action) <= options_.memory)
                return action;
            if (overtaken_ >= overtakings * static_cast<int>(most_workers_) || ++searched == search_depth)
                return {};
        }
        return {};
    }

    std::uint64_t need_of(std::size_t action) {
        auto const [entry, is_new] = needs_.emplace(action, 0);
        // Nothing runs beside the action of a single worker.
        if (is_new && most_workers_ > 1)
            entry->second = estimate_memory(plan_.actions[action]);
        return entry->second;
    }

    std::uint64_t memory_in_use() const {
        std::uint64_t sum = 0;
        for (POOL_WORKER const& worker : workers_)
            sum += worker.running ? worker.running->memory : 0;
        return sum;
    }

    int threads_in_use() const {
        int used = 0;
        for (POOL_WORKER const& worker : workers_)
            used += worker.running ? worker.running->threads : 0;
        return used;
    }

    // An even share of the processors that nobody uses, for this action and those that may start beside it.
    int share_of_threads() const {
        int const used = threads_in_use();
        std::size_t const places = most_workers_ - running_count();
        std::size_t const starting = std::clamp<std::size_t>(schedule_.free_actions().size(), 1, places);
        return lacks_threads_ ? 1 : std::max(1, (options_.processors - used) / static_cast<int>(starting));
    }

    void start(std::size_t action) {
        PLANNED_ACTION const& planned = plan_.actions[action];
        overtaken_ = action == *schedule_.free_actions().begin() ? 0 : overtaken_ + 1;
        RUNNING_ACTION running;
        running.action = action;
        running.threads = share_of_threads();
        running.memory = need_of(action);
        needs_.erase(action);
        running.begin = CLOCK::now();
        running.unfinished = files_at_risk(planned);

        QString error;
        if (!idle_worker(error) && running_count() > 0) {
            // The system has no room for more: those that there are must do.
            most_workers_ = running_count();
            return;
        }
        tell([&](RUN_OBSERVER& observer) { observer.action_started(planned); });
        if (!journal_.note_start(planned, running.unfinished))
            error = QStringLiteral("what is being built cannot be noted down in the project's state folder");
        else
            state_.starting(planned);
        if (error.isEmpty() && give(running, error))
            schedule_.start(action);
        else
            finish_without_worker(action, error);
    }

    // Whether a worker has taken it.
    bool give(RUNNING_ACTION& running, QString& error) {
        while (POOL_WORKER* const worker = idle_worker(error)) {
            RUN_MESSAGE const order = {running.action, running.threads, changes_.mid(worker->known_changes)};
            if (worker->process->send(order)) {
                worker->known_changes = changes_.size();
                worker->running = std::move(running);
                return true;
            }
            // It died while it had nothing to do; that is nobody's failure.
            workers_.remove_if([&](POOL_WORKER const& other) { return &other == worker; });
        }
        return false;
    }

    void finish_without_worker(std::size_t action, QString const& error) {
        PLANNED_ACTION const& planned = plan_.actions[action];
        ACTION_RESULT result = fail_action(QStringLiteral("Not run: ") + error, line_to_observers(planned));
        result.surroundings_failed = true;
        finish(action, result);
    }

    POOL_WORKER* idle_worker(QString& error) {
        for (POOL_WORKER& worker : workers_)
            if (!worker.running)
                return &worker;
        std::vector<int> own = {interrupt_.descriptor()};
        for (POOL_WORKER const& worker : workers_) {
            own.push_back(worker.process->socket());
            own.push_back(worker.process->output());
        }
        std::unique_ptr<WORKER> process = WORKER::start(task_, own, error);
        if (!process)
            return nullptr;
        workers_.push_back({std::move(process), {}, changes_.size()});
        return &workers_.back();
    }

    std::function<void(QString const&)> line_to_observers(PLANNED_ACTION const& planned) {
        return [this, &planned](QString const& text) {
            tell([&](RUN_OBSERVER& observer) { observer.line(planned, text); });
        };
    }

    void wait() {
        std::vector<pollfd> entries = {{interrupt_.descriptor(), POLLIN, 0}};
        for (POOL_WORKER const& worker : workers_) {
            entries.push_back({worker.process->socket(), POLLIN, 0});
            entries.push_back({worker.process->output(), POLLIN, 0});
        }
        poll(entries.data(), entries.size(), static_cast<int>(tick.count()));
        std::size_t at = 1;
        for (auto worker = workers_.begin(); worker != workers_.end(); at += 2) {
            auto const current = worker++;
            if (entries[at + 1].revents != 0)
                current->process->collect_output();
            if (entries[at].revents != 0 && !listen_to(*current))
                workers_.erase(current);
        }
        journal_.note_life();
        end_what_takes_too_long();
        tell([](RUN_OBSERVER& observer) { observer.time_passed(); });
    }

    // Whether the worker lives on.
    bool listen_to(POOL_WORKER& worker) {
        bool is_open = worker.process->receive() == MESSAGE_READER::STATE::open;
        try {
            while (std::optional<MESSAGE> const message = worker.process->next())
                take(worker, *message);
        } catch (std::runtime_error const&) {
            // Whatever broke the worker's memory, it costs this action and no other.
            worker.process->kill();
            if (worker.running)
                worker.running->killed_by = QStringLiteral("the worker sent a message that is damaged");
            is_open = false;
        }
        if (!is_open && worker.running)
            take_end(worker);
        return is_open;
    }

    void take(POOL_WORKER& worker, MESSAGE const& message) {
        if (!worker.running)
            return;
        RUNNING_ACTION& running = *worker.running;
        PLANNED_ACTION const& planned = plan_.actions[running.action];
        if (auto const* const line = std::get_if<LINE_MESSAGE>(&message)) {
            running.lines += line->text;
            line_to_observers(planned)(line->text);
        } else if (auto const* const progress = std::get_if<PROGRESS_MESSAGE>(&message)) {
            tell([&](RUN_OBSERVER& observer) { observer.progress(planned, progress->value, progress->maximum); });
        } else if (auto const* const file = std::get_if<WORKING_FILE_MESSAGE>(&message)) {
            for (FILE_AT_RISK const& at_risk : file->files)
                running.unfinished.take(at_risk);
        } else if (auto const* const result = std::get_if<RESULT_MESSAGE>(&message)) {
            take_result(worker, *result);
        }
    }

    void take_result(POOL_WORKER& worker, RESULT_MESSAGE const& message) {
        std::size_t const action = worker.running->action;
        PLANNED_ACTION const& planned = plan_.actions[action];
        ACTION_RESULT result = message.result;
        worker.process->collect_output();
        result.library_lines = worker.process->take_output_lines();
        for (QTSHARED::ASSET_GRAPH::CHANGE const& change : message.changes) {
            QString error;
            if (session_.asset_graph().repeat(change, error)) {
                changes_.append(change);
            } else if (result.status == ACTION_RESULT::STATUS::succeeded) {
                // Another worker's action took the name first; neither could see the other.
                result.status = ACTION_RESULT::STATUS::failed;
                result.lines += error;
                line_to_observers(planned)(error);
                take_back_targets(planned, result.record.registered);
            }
        }
        if (result.status == ACTION_RESULT::STATUS::succeeded) {
            if (std::optional<QString> const clash = clash_of(planned, result)) {
                result.status = ACTION_RESULT::STATUS::failed;
                result.lines += *clash;
                line_to_observers(planned)(*clash);
                // The file goes too, so that the other action makes it anew: nobody knows who wrote last.
                take_back_targets(planned, result.record.registered);
            }
        }
        if (signals_ > 0 && result.status == ACTION_RESULT::STATUS::failed)
            result.status = ACTION_RESULT::STATUS::interrupted;
        worker.running.reset();
        note_in_state(plan_.actions[action], result);
        finish(action, result);
    }

    // Files that an action registers without having announced them are no part of the plan, so that two actions with
    // one such file are found only now: two of this build, or one of it and one that is up to date. The one that ends
    // last is told so.
    std::optional<QString> clash_of(PLANNED_ACTION const& planned, ACTION_RESULT const& result) {
        std::optional<QString> clash;
        auto const take = [&](QString const& path, bool is_announced) {
            auto const [maker, is_new] = makers_.try_emplace(QDir::cleanPath(path), planned.id);
            bool const is_taken =
                is_new ? !is_announced && state_.is_registered_by_another(planned, path) : maker->second != planned.id;
            if (is_taken && !clash)
                clash = QStringLiteral("another action makes %1 as well").arg(CONSOLE::shown(path));
        };
        for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
            if (!target.temporary)
                take(target.physical_path, true);
        for (ACTION_INTERFACE::REGISTERED_FILE const& file : result.record.registered)
            if (file.kind == ACTION_INTERFACE::REGISTERED_FILE::KIND::added)
                take(file.path, false);
        return clash;
    }

    // The worker has ended in the middle of its action.
    void take_end(POOL_WORKER& worker) {
        RUNNING_ACTION const running = *std::exchange(worker.running, std::nullopt);
        PLANNED_ACTION const& planned = plan_.actions[running.action];
        ACTION_RESULT result;
        result.lines = running.lines;
        result.milliseconds =
            std::chrono::duration_cast<std::chrono::milliseconds>(CLOCK::now() - running.begin).count();
        result.killed_by = worker.process->wait_for_end();
        if (!running.killed_by.isEmpty())
            result.killed_by = running.killed_by;
        worker.process->collect_output();
        result.library_lines = worker.process->take_output_lines();
        if (planned.state == PLANNED_ACTION::STATE::run) {
            take_back_targets(planned);
            remove_unfinished_files(running.unfinished);
        }
        if (running.threads > 1 && signals_ == 0 && lacked_threads(result.library_lines)) {
            lacks_threads_ = true;
            to_repeat_.push_back(running);
            return;
        }
        if (signals_ > 0) {
            result.status = ACTION_RESULT::STATUS::interrupted;
        } else {
            std::optional<LOGICAL_PATH> const file = subject_of(planned);
            QString const place = file ? QStringLiteral(" on %1").arg(shown_file(*file)) : QString();
            QString const line = QStringLiteral("\"%1\"%2: %3").arg(planned.name, place, result.killed_by);
            result.lines += line;
            line_to_observers(planned)(line);
        }
        note_in_state(plan_.actions[running.action], result);
        finish(running.action, result);
    }

    // After a run; of actions that were not run, the state knows what it knew.
    void note_in_state(PLANNED_ACTION& planned, ACTION_RESULT const& result) {
        // Where a file was announced and not made, the next build is to try again: some actions take a target that they
        // cannot open for no failure. Only the last step may have nothing to record.
        if (result.status == ACTION_RESULT::STATUS::succeeded && result.made_no_file && !planned.is_last_step)
            state_.forget(planned, RECORDED_ACTION::END::made_no_file);
        else if (result.status == ACTION_RESULT::STATUS::succeeded)
            state_.remember(planned, result);
        else if (result.status == ACTION_RESULT::STATUS::failed && planned.state == PLANNED_ACTION::STATE::run)
            state_.forget(planned, RECORDED_ACTION::END::failed);
    }

    void finish(std::size_t action, ACTION_RESULT const& result) {
        PLANNED_ACTION const& planned = plan_.actions[action];
        journal_.note_end(planned);
        bool const succeeded = result.status == ACTION_RESULT::STATUS::succeeded;
        schedule_.finish(action, succeeded);
        counts_.succeeded += succeeded ? 1 : 0;
        counts_.made_no_file += result.made_no_file ? 1 : 0;
        counts_.failed += result.status == ACTION_RESULT::STATUS::failed ? 1 : 0;
        counts_.surroundings_failed += result.surroundings_failed ? 1 : 0;
        counts_.not_run += result.status == ACTION_RESULT::STATUS::interrupted ? 1 : 0;
        tell([&](RUN_OBSERVER& observer) { observer.action_finished(planned, result); });
    }

    // The first signal asks the actions to stop; the second, or their taking too long over it, ends them.
    void look_at_signals() {
        int const count = interrupt_.count();
        if (count > 0 && signals_ == 0) {
            patience_ = CLOCK::now() + grace;
            for (POOL_WORKER& worker : workers_)
                if (worker.running)
                    worker.process->send(STOP_MESSAGE());
        }
        signals_ = count;
        if (signals_ > 1 || (signals_ > 0 && CLOCK::now() >= patience_))
            for (POOL_WORKER& worker : workers_)
                if (worker.running)
                    worker.process->kill();
    }

    void end_what_takes_too_long() {
        if (options_.timeout.count() == 0)
            return;
        for (POOL_WORKER& worker : workers_) {
            if (!worker.running || CLOCK::now() - worker.running->begin < options_.timeout)
                continue;
            worker.running->killed_by = QStringLiteral("ran longer than the %1 s that it may")
                                            .arg(QString::number(static_cast<double>(options_.timeout.count()) / 1000));
            worker.process->kill();
        }
    }

    PLAN& plan_;
    BUILD_SESSION& session_;
    BUILD_STATE& state_;
    RUN_OPTIONS const& options_;
    BUILD_JOURNAL& journal_;
    WORKER_TASK const task_;
    std::vector<RUN_OBSERVER*> const& observers_;
    SCHEDULE schedule_;
    std::size_t most_workers_;
    INTERRUPT interrupt_;
    int signals_ = 0;
    CLOCK::time_point patience_;
    std::list<POOL_WORKER> workers_;
    std::vector<RUNNING_ACTION> to_repeat_;
    /// The system refused a worker the threads that it had asked for.
    bool lacks_threads_ = false;
    /// Estimates of actions that were looked at and have not started yet.
    std::unordered_map<std::size_t, std::uint64_t> needs_;
    /// How many actions have started past the first free one.
    int overtaken_ = 0;
    /// Everything that this build's actions changed in the asset graph, in the order in which the tool learned of it.
    GRAPH_CHANGES changes_;
    /// Who wrote each file of this build.
    std::map<QString, int> makers_;
    RUN_COUNTS counts_;
};

}  // namespace

RUN_COUNTS run_plan(PLAN& plan, BUILD_SESSION& session, BUILD_STATE& state, RUN_OPTIONS const& options,
                    BUILD_JOURNAL& journal, std::vector<RUN_OBSERVER*> const& observers) {
    return BUILD_RUN(plan, session, state, options, journal, observers).run();
}

}  // namespace tool
