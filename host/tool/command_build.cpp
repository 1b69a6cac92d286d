// zab build [PATH...]: builds the project, or what is made from the files at or below the paths.
#include "host/framework/printable.hpp"
#include "host/tool/build_report.hpp"
#include "host/tool/events.hpp"
#include "host/tool/progress.hpp"

#include <CLI/CLI.hpp>

#include <QStorageInfo>

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
        app.add_flag("--fail-fast", fail_fast_, "Stop at the first failure; without it everything else is built");
        app.add_flag("--explain", explain_, "Say of each action why it runs");
        app.add_option("--events", events_, "Write the events of the build to FILE as JSON lines; - is standard output")
            ->type_name("FILE");
    }

    EXIT_CODE run(CONTEXT& context) override {
        BUILD_SESSION session(context);
        std::optional<PLAN> plan;
        if (EXIT_CODE const code = open_and_plan(context, session, paths_, plan); code != EXIT_CODE::success)
            return code;
        if (dry_run_) {
            say_what_would_run(context.console, *plan);
            return EXIT_CODE::success;
        }

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
        return exit_code(context.console, session, run_plan(*plan, session, {fail_fast_}, observers), events);
    }

private:
    void say_what_would_run(CONSOLE& console, PLAN const& plan) const {
        for (PLANNED_ACTION const& planned : plan.actions) {
            bool const is_error = planned.state == PLANNED_ACTION::STATE::error;
            QString const what =
                is_error ? QStringLiteral("would fail: %1: %2").arg(planned.name, framework::printable(planned.error))
                         : QStringLiteral("would run: %1").arg(planned.name);
            console.result(explain_ && !is_error ? what + QStringLiteral(": ") + planned.reason : what);
        }
    }

    static EXIT_CODE exit_code(CONSOLE& console, BUILD_SESSION const& session, RUN_COUNTS const& counts,
                               EVENT_WRITER const& events) {
        if (counts.interrupted)
            return EXIT_CODE::interrupted;
        if (counts.failed > 0) {
            QStorageInfo const disk(session.project().working);
            if (disk.isValid() && disk.bytesAvailable() < full_disk) {
                console.error(
                    QStringLiteral("the disk that holds %1 is full").arg(CONSOLE::shown(session.project().working)));
                return EXIT_CODE::environment;
            }
            return EXIT_CODE::failed;
        }
        if (!events.is_sound()) {
            console.error(QStringLiteral("the events could not be written to their end"));
            return EXIT_CODE::environment;
        }
        return EXIT_CODE::success;
    }

    std::vector<std::string> paths_;
    bool dry_run_ = false;
    bool fail_fast_ = false;
    bool explain_ = false;
    std::string events_;
};

}  // namespace

std::unique_ptr<COMMAND> make_command_build() {
    return std::make_unique<COMMAND_BUILD>();
}

}  // namespace tool
