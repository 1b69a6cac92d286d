// zab explain PATH: the rules that hold for one file, each value with the place that it comes from, and the actions
// that read or make the file.
#include "host/framework/printable.hpp"
#include "host/tool/open_plan.hpp"
#include "host/tool/rule_value_text.hpp"
#include "processor/host/paths.hpp"

#include <CLI/CLI.hpp>

#include <QFileInfo>

#include <algorithm>

namespace tool {

namespace {

class COMMAND_EXPLAIN : public COMMAND {
public:
    char const* name() const override { return "explain"; }
    char const* summary() const override { return "Show the rules of a file, and the actions it gets"; }

    void declare(CLI::App& app) override { app.add_option("PATH", path_, "The file; it need not exist")->required(); }

    EXIT_CODE run(CONTEXT& context) override {
        OPENED_PLAN opened(context);
        if (EXIT_CODE const code = open_plan(context, opened, {}, false); code != EXIT_CODE::success && !opened.plan)
            return code;
        BUILD_SESSION& session = opened.session;
        std::optional<QString> const path = session.project_path(path_);
        if (!path) {
            context.console.error(QStringLiteral("%1 lies in neither data folder of the project")
                                      .arg(framework::printable(argument(path_))));
            return EXIT_CODE::wrong_use;
        }
        LOGICAL_PATH const logical(*path);
        bool const is_listed = session.files().contains(logical);
        context.console.result(shown_file(logical) + QStringLiteral(" (%1)").arg(framework::printable(*path)) +
                               (is_listed ? QString() : QStringLiteral(": not among the project's files")));
        show_rules(context.console, session, logical);
        show_actions(context.console, *opened.plan, logical);
        return EXIT_CODE::success;
    }

private:
    static void show_rules(CONSOLE& console, BUILD_SESSION const& session, LOGICAL_PATH const& path) {
        bool any = false;
        for (QString const& name : session.rules().rule_names()) {
            RULE const rule = session.rules().get(path, name);
            if (!rule.exists())
                continue;
            any = true;
            QStringList tables;
            for (framework::RULE_TABLE const* const table : session.rules().matching_tables(path, name))
                tables += QStringLiteral("%1:%2").arg(CONSOLE::shown(table->file), QString::number(table->line));
            console.result(QStringLiteral("rule \"%1\" from %2")
                               .arg(framework::printable(name), tables.join(QStringLiteral(", "))));
            std::vector<QString> written;
            int width = 0;
            for (RULE_VALUES::VALUE const& value : rule.values()->all()) {
                written.push_back(
                    framework::printable(value.property + QStringLiteral(" = ") + as_written(value.value)));
                width = std::max(width, written.back().size());
            }
            for (std::size_t i = 0; i < written.size(); ++i) {
                RULE_VALUES::VALUE const& value = rule.values()->all()[i];
                console.result(
                    QStringLiteral("  %1  %2:%3")
                        .arg(written[i].leftJustified(width), CONSOLE::shown(value.file), QString::number(value.line)));
            }
        }
        if (!any)
            console.result(QStringLiteral("no rule applies"));
    }

    static void show_actions(CONSOLE& console, PLAN const& plan, LOGICAL_PATH const& path) {
        bool any = false;
        for (PLANNED_ACTION const& planned : plan.actions) {
            bool const reads = planned.sources.contains(path);
            bool const makes = std::any_of(planned.targets.begin(), planned.targets.end(),
                                           [&](auto const& target) { return target.logical_path == path; });
            if (!reads && !makes)
                continue;
            any = true;
            console.result(QStringLiteral("%1 by action %2, %3")
                               .arg(reads ? QStringLiteral("read") : QStringLiteral("made"))
                               .arg(planned.id)
                               .arg(planned.name));
            if (planned.state == PLANNED_ACTION::STATE::error)
                console.result(QStringLiteral("  error: ") + framework::printable(planned.error));
            else if (planned.state == PLANNED_ACTION::STATE::up_to_date)
                console.result(QStringLiteral("  up to date"));
            else if (!planned.reason.isEmpty())
                console.result(QStringLiteral("  to be built: ") + framework::printable(planned.reason));
            for (LOGICAL_PATH const& source : planned.sources)
                if (!(source == path))
                    console.result(QStringLiteral("  reads ") + shown_file(source));
            for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
                console.result(QStringLiteral("  makes ") + CONSOLE::shown(target.physical_path));
        }
        if (!any)
            console.result(QStringLiteral("no action reads or makes it"));
    }

    std::string path_;
};

}  // namespace

std::unique_ptr<COMMAND> make_command_explain() {
    return std::make_unique<COMMAND_EXPLAIN>();
}

}  // namespace tool
