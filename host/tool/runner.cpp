#include "host/tool/runner.hpp"

#include "host/tool/interrupt.hpp"

#include <QElapsedTimer>

namespace tool {

namespace {

// The first need whose failure this action cannot do without; null when there is none.
PLANNED_ACTION const* failed_need(PLAN const& plan, PLANNED_ACTION const& planned, std::vector<bool> const& succeeded) {
    if (!planned.action->auto_fail_if_dependency_failed())
        return nullptr;
    for (PLANNED_ACTION::NEED const& need : planned.needs)
        if (!need.optional && !succeeded[need.action])
            return &plan.actions[need.action];
    return nullptr;
}

}  // namespace

RUN_COUNTS run_plan(PLAN& plan, BUILD_SESSION& session, BUILD_STATE& state, RUN_OPTIONS const& options,
                    std::vector<RUN_OBSERVER*> const& observers) {
    INTERRUPT interrupt;
    QElapsedTimer clock;
    clock.start();
    RUN_COUNTS counts;
    counts.total = plan.actions.size();
    counts.up_to_date = plan.up_to_date;
    std::vector<bool> succeeded(plan.actions.size(), false);
    for (RUN_OBSERVER* const observer : observers)
        observer->run_started(plan);

    std::size_t done = 0;
    for (; done < plan.actions.size(); ++done) {
        if (interrupt.is_requested() || (options.fail_fast && counts.failed > 0))
            break;
        PLANNED_ACTION& planned = plan.actions[done];
        PLANNED_ACTION const* const need = failed_need(plan, planned, succeeded);
        if (!need && state.is_up_to_date_now(planned)) {
            succeeded[done] = true;
            ++counts.up_to_date;
            for (RUN_OBSERVER* const observer : observers)
                observer->action_is_up_to_date(planned);
            continue;
        }
        for (RUN_OBSERVER* const observer : observers)
            observer->action_started(planned);
        auto const line = [&](QString const& text) {
            for (RUN_OBSERVER* const observer : observers)
                observer->line(planned, text);
        };

        ACTION_RESULT result;
        if (planned.refused) {
            result = fail_action(planned.error, line);
        } else if (need) {
            result = fail_action(QStringLiteral("Not run: it needs \"%1\", which failed").arg(need->name), line);
        } else {
            interrupt.set_handlers([&] { planned.action->abort(); }, [&] { remove_targets(planned); });
            state.starting(planned);
            result = execute_action(planned, session.files(), session.rules(), line);
            interrupt.set_handlers({}, {});
            if (interrupt.is_requested() && result.status == ACTION_RESULT::STATUS::failed)
                result.status = ACTION_RESULT::STATUS::interrupted;
            if (result.status == ACTION_RESULT::STATUS::succeeded)
                state.remember(planned, result);
            else if (result.status == ACTION_RESULT::STATUS::failed && planned.state == PLANNED_ACTION::STATE::run)
                state.forget(planned);
        }

        succeeded[done] = result.status == ACTION_RESULT::STATUS::succeeded;
        counts.succeeded += succeeded[done] ? 1 : 0;
        counts.made_no_file += result.made_no_file ? 1 : 0;
        counts.failed += result.status == ACTION_RESULT::STATUS::failed ? 1 : 0;
        counts.not_run += result.status == ACTION_RESULT::STATUS::interrupted ? 1 : 0;
        for (RUN_OBSERVER* const observer : observers)
            observer->action_finished(planned, result);
    }
    counts.not_run += plan.actions.size() - done;
    state.finish();
    counts.interrupted = interrupt.is_requested();
    counts.milliseconds = clock.elapsed();
    for (RUN_OBSERVER* const observer : observers)
        observer->run_finished(counts);
    return counts;
}

}  // namespace tool
