// zab plan [PATH...]: the actions of a build, in the order in which they run, without running any.
#include "host/framework/printable.hpp"
#include "host/tool/open_plan.hpp"
#include "host/tool/plan_json.hpp"

#include <CLI/CLI.hpp>

#include <QJsonDocument>

namespace tool {

namespace {

class COMMAND_PLAN : public COMMAND {
public:
    char const* name() const override { return "plan"; }
    char const* summary() const override { return "Show the actions of a build, with their files and order"; }

    void declare(CLI::App& app) override {
        app.add_option("PATH", paths_, "Only what is made from files at or below these paths, and what that needs");
        app.add_flag("--force", force_, "As if nothing were up to date");
        app.add_flag("--json", json_, "As a JSON array");
    }

    EXIT_CODE run(CONTEXT& context) override {
        OPENED_PLAN opened(context);
        EXIT_CODE const code = open_plan(context, opened, paths_, force_);
        if (!opened.plan)
            return code;
        if (json_) {
            QByteArray const text = QJsonDocument(to_json(*opened.plan)).toJson(QJsonDocument::Indented);
            context.console.result(QString::fromUtf8(text).trimmed());
        } else {
            for (PLANNED_ACTION const& planned : opened.plan->actions)
                show(context.console, *opened.plan, planned);
            if (opened.state)
                for (BUILD_STATE::STALE_TARGET const& stale : opened.state->stale_targets())
                    context.console.result(QStringLiteral("no action makes %1 any more").arg(shown_file(stale.path)));
        }
        return code;
    }

private:
    static void show(CONSOLE& console, PLAN const& plan, PLANNED_ACTION const& planned) {
        bool const is_error = planned.state == PLANNED_ACTION::STATE::error;
        QString const state = is_error ? QStringLiteral("error: ") + planned.error
                              : planned.state == PLANNED_ACTION::STATE::up_to_date ? QStringLiteral("up to date")
                                                                                   : planned.reason;
        console.result(QStringLiteral("%1 %2: %3").arg(planned.id).arg(planned.name, framework::printable(state)));
        for (LOGICAL_PATH const& source : planned.sources)
            console.result(QStringLiteral("  reads ") + shown_file(source));
        for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
            console.result(QStringLiteral("  makes ") + CONSOLE::shown(target.physical_path));
        for (PLANNED_ACTION::NEED const& need : planned.needs)
            console.result(QStringLiteral("  after ") + QString::number(plan.actions[need.action].id));
    }

    std::vector<std::string> paths_;
    bool force_ = false;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<COMMAND> make_command_plan() {
    return std::make_unique<COMMAND_PLAN>();
}

}  // namespace tool
