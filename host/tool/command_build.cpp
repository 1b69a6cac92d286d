// zab build [PATH...]: builds the project, or what is made from the files at or below the paths.
#include "host/framework/printable.hpp"
#include "host/tool/build_report.hpp"
#include "host/tool/database_step.hpp"
#include "host/tool/events.hpp"
#include "host/tool/machine_limits.hpp"
#include "host/tool/open_plan.hpp"
#include "host/tool/progress.hpp"
#include "host/tool/project_lock.hpp"
#include "host/tool/working_root.hpp"

#include <CLI/CLI.hpp>

#include <QStorageInfo>

#include <algorithm>
#include <limits>

namespace tool {

namespace {

// Less than any texture needs.
constexpr qint64 full_disk = 65536;

class COMMAND_BUILD : public COMMAND {
public:
    char const* name() const override { return "build"; }
    char const* summary() const override { return "Build the project's textures"; }

    void declare(CLI::App& app) override {
        app.add_option("PATH", paths_, "Only what is made from files at or below these paths, and what that needs");
        app.add_flag("-n,--dry-run", dry_run_, "Say what would be done, and do nothing");
        app.add_option("-j,--jobs", jobs_,
                       "So many actions at a time; at most, and without it, as many as there are processors")
            ->check(CLI::Range(1, 100000).description(""))
            ->type_name("N");
        app.add_option(
               "--memory", memory_,
               "Actions run side by side only while they are expected to need less than SIZE together (bytes, or "
               "with K, M, G); without it most of what is free")
            ->check([](std::string const& text) {
                return parse_size(text) ? std::string() : "\"" + text + "\" is no size such as 800M or 4G";
            })
            ->type_name("SIZE");
        app.add_option("--timeout", timeout_, "An action that runs longer than so many seconds is ended and fails")
            ->check(CLI::Range(0.001, 1e9).description(""))
            ->type_name("SECONDS");
        app.add_flag("--no-wait", no_wait_, "Do not wait for another build of this project: end with status 3");
        app.add_flag("--force", force_, "Build what is up to date as well");
        app.add_flag("--fail-fast", fail_fast_, "Stop at the first failure; without it everything else is built");
        app.add_flag("--explain", explain_, "Say of each action why it runs");
        app.add_option("--events", events_, "Write the events of the build to FILE as JSON lines; - is standard output")
            ->type_name("FILE");
    }

    EXIT_CODE run(CONTEXT& context) override {
        PROJECT_LOCK lock;
        OPENED_PLAN opened(context);
        if (!dry_run_)
            if (EXIT_CODE const code = open_exclusively(context, opened.session, !no_wait_, lock);
                code != EXIT_CODE::success)
                return code;
        if (EXIT_CODE const code = open_plan(context, opened, paths_, force_); code != EXIT_CODE::success)
            return code;
        BUILD_SESSION& session = opened.session;
        PLAN& plan = *opened.plan;
        if (dry_run_) {
            say_what_would_run(context.console, plan);
            return EXIT_CODE::success;
        }
        drop_up_to_date(plan, *opened.state);

        BUILD_REPORT report(context.console, explain_);
        PROGRESS_LINE progress(context.console);
        std::vector<RUN_OBSERVER*> observers = {&progress, &report};
        EVENT_WRITER events;
        if (!events_.empty()) {
            QString error;
            if (!events.open(argument(events_), error)) {
                context.console.error(framework::printable(error));
                return EXIT_CODE::environment;
            }
            observers.push_back(&events);
        }
        BUILD_JOURNAL journal;
        if (QString error; !journal.open(session.project().state_folder, error)) {
            context.console.error(error);
            return EXIT_CODE::environment;
        }
        WORKING_ROOT root;
        if (std::any_of(plan.actions.begin(), plan.actions.end(),
                        [](PLANNED_ACTION const& planned) { return planned.state == PLANNED_ACTION::STATE::run; }))
            root.open(session);
        RUN_OPTIONS const options = run_options();
        auto const run_part = [&](PLAN& part, std::vector<RUN_OBSERVER*> const& part_observers) {
            return run_plan(part, session, *opened.state, options, journal, part_observers);
        };
        RUN_COUNTS const counts = run_with_last_step(std::move(plan), session, {fail_fast_, observers, run_part});
        journal.close();
        say_what_is_stale(context.console, *opened.state);
        return exit_code(context.console, session, counts, *opened.state, events);
    }

private:
    RUN_OPTIONS run_options() const {
        // The rest is for the tool itself, for what else grows, and for guesses that were too low.
        constexpr double share_of_free_memory = 0.8;
        RUN_OPTIONS options;
        options.fail_fast = fail_fast_;
        options.processors = available_processors();
        options.jobs = jobs_.value_or(options.processors);
        options.timeout = std::chrono::milliseconds(static_cast<std::int64_t>(timeout_ * 1000));
        if (!memory_.empty())
            options.memory = *parse_size(memory_);
        else if (std::optional<std::uint64_t> const available = available_memory())
            options.memory = static_cast<std::uint64_t>(static_cast<double>(*available) * share_of_free_memory);
        else
            options.memory = std::numeric_limits<std::uint64_t>::max();
        return options;
    }

    void say_what_would_run(CONSOLE& console, PLAN const& plan) const {
        for (PLANNED_ACTION const& planned : plan.actions) {
            if (planned.state == PLANNED_ACTION::STATE::up_to_date)
                continue;
            bool const is_error = planned.state == PLANNED_ACTION::STATE::error;
            QString const what =
                is_error ? QStringLiteral("would fail: %1: %2").arg(planned.name, framework::printable(planned.error))
                         : QStringLiteral("would run: %1").arg(planned.name);
            console.result(explain_ && !is_error ? what + QStringLiteral(": ") + framework::printable(planned.reason)
                                                 : what);
        }
    }

    static void say_what_is_stale(CONSOLE& console, BUILD_STATE& state) {
        std::size_t const count = state.stale_targets().size();
        if (count > 0 && console.verbosity() != VERBOSITY::quiet)
            console.message(
                QStringLiteral("%1 of earlier builds that no action makes any more; \"zab clean --stale\" "
                               "removes %2")
                    .arg(count == 1 ? QStringLiteral("1 file is left") : QStringLiteral("%1 files are left").arg(count),
                         count == 1 ? QStringLiteral("it") : QStringLiteral("them")));
    }

    static EXIT_CODE exit_code(CONSOLE& console, BUILD_SESSION const& session, RUN_COUNTS const& counts,
                               BUILD_STATE const& state, EVENT_WRITER const& events) {
        if (counts.interrupted)
            return EXIT_CODE::interrupted;
        if (counts.failed > 0) {
            bool is_full = false;
            for (QString const& folder : {session.project().working, session.project().state_folder}) {
                QStorageInfo const disk(folder);
                if (is_full || !disk.isValid() || disk.bytesAvailable() >= full_disk)
                    continue;
                console.error(QStringLiteral("the disk that holds %1 is full").arg(CONSOLE::shown(folder)));
                is_full = true;
            }
            return is_full || counts.surroundings_failed > 0 ? EXIT_CODE::environment : EXIT_CODE::failed;
        }
        if (!state.is_sound())
            return EXIT_CODE::environment;
        if (!events.is_sound()) {
            console.error(QStringLiteral("the events could not be written to their end"));
            return EXIT_CODE::environment;
        }
        return EXIT_CODE::success;
    }

    std::vector<std::string> paths_;
    bool dry_run_ = false;
    std::optional<int> jobs_;
    std::string memory_;
    double timeout_ = 0;
    bool no_wait_ = false;
    bool force_ = false;
    bool fail_fast_ = false;
    bool explain_ = false;
    std::string events_;
};

}  // namespace

std::unique_ptr<COMMAND> make_command_build() {
    return std::make_unique<COMMAND_BUILD>();
}

}  // namespace tool
