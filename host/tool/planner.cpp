// Order: an action comes after those that it names as dependencies and after those that make a file that it reads;
// among actions that are free, the processors' own order holds (Kahn's algorithm with a queue sorted by that order).
#include "host/tool/planner.hpp"

#include "host/framework/printable.hpp"
#include "host/tool/target_guard.hpp"
#include "processor/host/paths.hpp"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <functional>
#include <queue>
#include <unordered_map>

namespace tool {

namespace {

class PLANNER {
public:
    explicit PLANNER(BUILD_SESSION& session) : session_(session) {}

    PLAN plan() {
        gather();
        refuse_targets_outside();
        find_producers();
        connect();
        order();
        return std::move(plan_);
    }

private:
    void gather() {
        for (auto const& action : session_.actions()) {
            PLANNED_ACTION planned;
            planned.id = static_cast<int>(plan_.actions.size()) + 1;
            planned.action = action.get();
            planned.name = framework::printable(action->get_name(true));
            QDateTime newest;
            action->get_affected_files(planned.sources, planned.targets, newest, session_.files(), session_.rules());
            planned.reason = QStringLiteral("always built");
            if (!action->error().isEmpty()) {
                planned.state = PLANNED_ACTION::STATE::error;
                planned.error = action->error();
            }
            plan_.actions.push_back(std::move(planned));
        }
    }

    // Where the rules of an action's first source say anything of targets, as " (path:line, ...)". The planner does not
    // know which rule an action went by, so it names every one.
    QString target_rules(PLANNED_ACTION const& planned) const {
        QStringList places;
        for (QString const& name : session_.rules().rule_names()) {
            if (planned.sources.isEmpty())
                break;
            RULE const rule = session_.rules().get(planned.sources.first(), name);
            for (char const* property : {"TargetPath", "TargetBaseName"}) {
                RULE_VALUES::VALUE const* const value =
                    rule.exists() ? rule.values()->find(QLatin1String(property)) : nullptr;
                if (value)
                    places += QStringLiteral("%1:%2").arg(CONSOLE::shown(value->file), QString::number(value->line));
            }
        }
        places.removeDuplicates();
        return places.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(places.join(QStringLiteral(", ")));
    }

    void refuse_targets_outside() {
        TARGET_GUARD guard(session_.project().working);
        for (PLANNED_ACTION& planned : plan_.actions) {
            if (planned.state == PLANNED_ACTION::STATE::error)
                continue;
            for (ACTION_INTERFACE::TARGET_FILE const& target : qAsConst(planned.targets)) {
                QString const refusal = guard.refusal(target.physical_path);
                if (refusal.isEmpty())
                    continue;
                planned.state = PLANNED_ACTION::STATE::error;
                planned.error = refusal + target_rules(planned);
                planned.refused = true;
                break;
            }
        }
    }

    void find_producers() {
        for (std::size_t i = 0; i < plan_.actions.size(); ++i) {
            PLANNED_ACTION const& planned = plan_.actions[i];
            if (planned.state == PLANNED_ACTION::STATE::error)
                continue;
            for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets) {
                QString const file = QDir::cleanPath(target.physical_path);
                auto const first = producers_.constFind(file);
                if (first != producers_.constEnd() && *first != i) {
                    PLANNED_ACTION const& other = plan_.actions[*first];
                    plan_.conflicts.push_back(QStringLiteral("two actions would write %1\n  %2\n  %3")
                                                  .arg(CONSOLE::shown(file), described(other), described(planned)));
                    continue;
                }
                producers_.insert(file, i);
                if (FILE_ENTRY* const entry = session_.files().value(target.logical_path))
                    entry->producers.append(planned.action);
                session_.asset_graph().add_texture(target.logical_path);
            }
        }
    }

    QString described(PLANNED_ACTION const& planned) const {
        QString const source =
            planned.sources.isEmpty() ? QString() : shown_file(planned.sources.first()) + QStringLiteral(": ");
        return source + planned.name + target_rules(planned);
    }

    void connect() {
        QHash<ACTION_INTERFACE const*, std::size_t> places;
        for (std::size_t i = 0; i < plan_.actions.size(); ++i)
            places.insert(plan_.actions[i].action, i);
        for (std::size_t i = 0; i < plan_.actions.size(); ++i) {
            PLANNED_ACTION& planned = plan_.actions[i];
            // An action may need every other one, so the search for those known already must be quick.
            std::unordered_map<std::size_t, std::size_t> known;
            auto const need = [&](std::size_t other, bool optional) {
                if (other == i)
                    return;
                auto const [entry, is_new] = known.emplace(other, planned.needs.size());
                if (is_new)
                    planned.needs.push_back({other, optional});
                else
                    planned.needs[entry->second].optional = planned.needs[entry->second].optional && optional;
            };
            for (ACTION_INTERFACE::DEPENDENCY const& dependency : planned.action->dependencies()) {
                auto const place = places.constFind(dependency.action);
                if (place != places.constEnd())
                    need(*place, dependency.optional);
            }
            for (LOGICAL_PATH const& source : qAsConst(planned.sources)) {
                auto const producer = producers_.constFind(QDir::cleanPath(PATHS::physical_path(source)));
                if (producer != producers_.constEnd())
                    need(*producer, false);
            }
        }
    }

    void order() {
        std::size_t const count = plan_.actions.size();
        std::vector<std::vector<std::size_t>> waiting(count);
        std::vector<std::size_t> open_needs(count);
        std::priority_queue<std::size_t, std::vector<std::size_t>, std::greater<>> free;
        for (std::size_t i = 0; i < count; ++i) {
            open_needs[i] = plan_.actions[i].needs.size();
            for (PLANNED_ACTION::NEED const& need : plan_.actions[i].needs)
                waiting[need.action].push_back(i);
            if (open_needs[i] == 0)
                free.push(i);
        }
        std::vector<std::size_t> sequence;
        while (!free.empty()) {
            std::size_t const next = free.top();
            free.pop();
            sequence.push_back(next);
            for (std::size_t const other : waiting[next])
                if (--open_needs[other] == 0)
                    free.push(other);
        }
        if (sequence.size() < count) {
            report_circle(open_needs);
            return;
        }
        std::vector<std::size_t> place(count);
        std::vector<PLANNED_ACTION> ordered;
        for (std::size_t const i : sequence) {
            place[i] = ordered.size();
            ordered.push_back(std::move(plan_.actions[i]));
        }
        for (PLANNED_ACTION& planned : ordered)
            for (PLANNED_ACTION::NEED& need : planned.needs)
                need.action = place[need.action];
        plan_.actions = std::move(ordered);
    }

    // Every action that is left has a need that is left too, so going from need to need must come round.
    void report_circle(std::vector<std::size_t> const& open_needs) {
        std::vector<std::size_t> way;
        auto at = static_cast<std::size_t>(
            std::find_if(open_needs.begin(), open_needs.end(), [](std::size_t open) { return open > 0; }) -
            open_needs.begin());
        while (std::find(way.begin(), way.end(), at) == way.end()) {
            way.push_back(at);
            for (PLANNED_ACTION::NEED const& need : plan_.actions[at].needs) {
                if (open_needs[need.action] > 0) {
                    at = need.action;
                    break;
                }
            }
        }
        QString text = QStringLiteral("actions wait for each other:");
        for (auto step = std::find(way.begin(), way.end(), at); step != way.end(); ++step)
            text += QStringLiteral("\n  ") + described(plan_.actions[*step]);
        plan_.conflicts.push_back(text);
    }

    BUILD_SESSION& session_;
    PLAN plan_;
    /// Target file to its action's place.
    QHash<QString, std::size_t> producers_;
};

}  // namespace

PLAN make_plan(BUILD_SESSION& session) {
    return PLANNER(session).plan();
}

void restrict_plan(PLAN& plan, std::vector<QString> const& paths) {
    std::vector<bool> wanted(plan.actions.size(), false);
    // Needs stand before those who need them, so one pass from the end finds them all.
    for (std::size_t i = plan.actions.size(); i-- > 0;) {
        PLANNED_ACTION const& planned = plan.actions[i];
        for (LOGICAL_PATH const& source : planned.sources)
            for (QString const& path : paths)
                if (source.text() == path || source.text().startsWith(path.endsWith(u'/') ? path : path + u'/'))
                    wanted[i] = true;
        if (wanted[i])
            for (PLANNED_ACTION::NEED const& need : planned.needs)
                wanted[need.action] = true;
    }
    std::vector<std::size_t> place(plan.actions.size());
    std::vector<PLANNED_ACTION> kept;
    for (std::size_t i = 0; i < plan.actions.size(); ++i) {
        place[i] = kept.size();
        if (wanted[i])
            kept.push_back(std::move(plan.actions[i]));
    }
    for (PLANNED_ACTION& planned : kept)
        for (PLANNED_ACTION::NEED& need : planned.needs)
            need.action = place[need.action];
    plan.actions = std::move(kept);
}

QString shown_file(LOGICAL_PATH const& path) {
    return CONSOLE::shown(PATHS::physical_path(path));
}

EXIT_CODE open_and_plan(CONTEXT& context, BUILD_SESSION& session, std::vector<std::string> const& paths,
                        std::optional<PLAN>& plan) {
    if (EXIT_CODE const code = session.open(); code != EXIT_CODE::success)
        return code;
    std::vector<QString> wanted;
    for (std::string const& given : paths) {
        std::optional<QString> const path = session.project_path(given);
        if (!path) {
            context.console.error(QStringLiteral("%1 lies in neither data folder of the project").arg(argument(given)));
            return EXIT_CODE::wrong_use;
        }
        if (!QFileInfo::exists(PATHS::physical_path(LOGICAL_PATH(*path)))) {
            context.console.error(QStringLiteral("%1 does not exist").arg(argument(given)));
            return EXIT_CODE::wrong_use;
        }
        wanted.push_back(*path);
    }
    plan = make_plan(session);
    if (!wanted.empty() && plan->conflicts.empty()) {
        restrict_plan(*plan, wanted);
        if (plan->actions.empty())
            context.console.warning(QStringLiteral("no action reads what is asked for; \"zab explain\" tells of a "
                                                   "file's rules"));
    }
    for (QString const& conflict : plan->conflicts)
        context.console.error(conflict);
    return plan->conflicts.empty() ? EXIT_CODE::success : EXIT_CODE::wrong_use;
}

}  // namespace tool
