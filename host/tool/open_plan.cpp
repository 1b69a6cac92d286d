#include "host/tool/open_plan.hpp"

#include "host/framework/printable.hpp"
#include "host/tool/atlas_pages.hpp"
#include "host/tool/build_journal.hpp"
#include "host/tool/plugin_call.hpp"
#include "processor/host/paths.hpp"

#include <QFileInfo>

#include <algorithm>

namespace tool {

namespace {

EXIT_CODE find_paths(CONTEXT& context, BUILD_SESSION const& session, std::vector<std::string> const& given,
                     std::vector<QString>& found) {
    for (std::string const& text : given) {
        std::optional<QString> const path = session.project_path(text);
        if (!path) {
            context.console.error(QStringLiteral("%1 lies in neither data folder of the project")
                                      .arg(framework::printable(argument(text))));
            return EXIT_CODE::wrong_use;
        }
        if (!QFileInfo::exists(PATHS::physical_path(LOGICAL_PATH(*path)))) {
            context.console.error(QStringLiteral("%1 does not exist").arg(framework::printable(argument(text))));
            return EXIT_CODE::wrong_use;
        }
        found.push_back(*path);
    }
    return EXIT_CODE::success;
}

void decide(PLAN& plan, BUILD_STATE& state, bool force) {
    for (PLANNED_ACTION& planned : plan.actions) {
        if (planned.state == PLANNED_ACTION::STATE::error)
            continue;
        if (force) {
            planned.reason = QStringLiteral("asked for by --force");
            continue;
        }
        auto const runs = [&](PLANNED_ACTION::NEED const& need) {
            return plan.actions[need.action].state != PLANNED_ACTION::STATE::up_to_date;
        };
        auto const need = std::find_if(planned.needs.begin(), planned.needs.end(), runs);
        planned.awaits_needs = need != planned.needs.end();
        std::optional<QString> const reason = state.reason_to_run(planned);
        if (reason)
            planned.reason = *reason;
        else if (planned.awaits_needs)
            planned.reason = QStringLiteral("needs \"%1\", which will be built").arg(plan.actions[need->action].name);
        else
            planned.state = PLANNED_ACTION::STATE::up_to_date;
    }
}

// Before anything is touched. What a build that died, or one that runs, made for itself goes by itself.
void refuse_what_is_in_the_way(PLAN& plan, QString const& state_folder) {
    std::optional<QSet<QString>> left_over;
    for (PLANNED_ACTION& planned : plan.actions) {
        if (planned.state != PLANNED_ACTION::STATE::run)
            continue;
        QString const file = working_file_in_the_way(planned);
        if (file.isEmpty())
            continue;
        if (!left_over) {
            left_over.emplace();
            BUILD_JOURNAL::LEFT_OVER const left = BUILD_JOURNAL::left_over(state_folder);
            for (UNFINISHED_ACTION const& unfinished : left.actions)
                for (QString const& path : unfinished_files(unfinished, left.last_sign_of_life))
                    left_over->insert(path);
        }
        if (left_over->contains(file))
            continue;
        planned.state = PLANNED_ACTION::STATE::error;
        planned.error = refusal_of_file_in_the_way(file);
        planned.refused = true;
    }
}

}  // namespace

EXIT_CODE open_plan(CONTEXT& context, OPENED_PLAN& opened, std::vector<std::string> const& paths, bool force) {
    if (EXIT_CODE const code = opened.session.open(); code != EXIT_CODE::success)
        return code;
    std::vector<QString> wanted;
    if (EXIT_CODE const code = find_paths(context, opened.session, paths, wanted); code != EXIT_CODE::success)
        return code;
    EXIT_CODE const code = call_plugin(opened.session.plugin_file(), context.console, [&] {
        opened.plan = make_plan(opened.session);
        return EXIT_CODE::success;
    });
    if (code != EXIT_CODE::success)
        return code;
    for (QString const& conflict : opened.plan->conflicts)
        context.console.error(conflict);
    if (!opened.plan->conflicts.empty())
        return EXIT_CODE::wrong_use;
    opened.state = std::make_unique<BUILD_STATE>(opened.session, context.console);
    opened.state->open(*opened.plan);
    if (!opened.state->is_sound())
        return EXIT_CODE::environment;
    for (PLANNED_ACTION& planned : opened.plan->actions) {
        if (QString const refusal = take_out_foreign_pages(planned, *opened.state, opened.session.rules());
            !refusal.isEmpty()) {
            planned.state = PLANNED_ACTION::STATE::error;
            planned.error = refusal;
            planned.refused = true;
        }
    }
    if (!wanted.empty()) {
        restrict_plan(*opened.plan, wanted);
        if (opened.plan->actions.empty())
            context.console.warning(QStringLiteral("no action reads what is asked for; \"zab explain\" tells of a "
                                                   "file's rules"));
    }
    decide(*opened.plan, *opened.state, force);
    refuse_what_is_in_the_way(*opened.plan, opened.session.project().state_folder);
    return EXIT_CODE::success;
}

void drop_up_to_date(PLAN& plan, BUILD_STATE& state) {
    std::vector<bool> runs;
    for (PLANNED_ACTION const& planned : plan.actions) {
        runs.push_back(planned.state != PLANNED_ACTION::STATE::up_to_date);
        if (!runs.back())
            state.keep(planned);
    }
    plan.up_to_date += static_cast<std::size_t>(std::count(runs.begin(), runs.end(), false));
    keep_actions(plan, runs);
}

}  // namespace tool
