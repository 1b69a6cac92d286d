// Order: an action comes after those that it names as dependencies and after those that make a file that it reads;
// among actions that are free, the processors' own order holds (Kahn's algorithm with a queue sorted by that order).
#include "host/tool/planner.hpp"

#include "host/framework/printable.hpp"
#include "host/tool/atlas_pages.hpp"
#include "host/tool/database_step.hpp"
#include "host/tool/target_guard.hpp"
#include "processor/host/paths.hpp"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <functional>
#include <map>
#include <queue>
#include <unordered_map>
#include <utility>

namespace tool {

namespace {

class PLANNER {
public:
    explicit PLANNER(BUILD_SESSION& session) : session_(session), guard_(session.project().working) {}

    PLAN plan() {
        take_in_new_actions(false);
        if (session_.project().image_database) {
            session_.files().sort();
            session_.create_database_actions();
            take_in_new_actions(true);
        }
        find_shared_pages();
        connect();
        order();
        std::vector<bool> wanted;
        for (PLANNED_ACTION const& planned : plan_.actions)
            wanted.push_back(!spare_.contains(planned.action));
        keep_actions(plan_, wanted);
        return std::move(plan_);
    }

private:
    /// What the session has made since the last call.
    void take_in_new_actions(bool are_last_step) {
        std::size_t const first = plan_.actions.size();
        gather(are_last_step);
        refuse_targets_outside(first);
        find_producers(first);
    }

    void gather(bool are_last_step) {
        for (std::size_t i = plan_.actions.size(); i < session_.actions().size(); ++i) {
            ACTION_INTERFACE* const action = session_.actions()[i].get();
            PLANNED_ACTION planned;
            planned.id = static_cast<int>(i) + 1;
            planned.action = action;
            planned.is_last_step = are_last_step;
            planned.name = framework::printable(action->get_name(true));
            ask_for_files(planned, session_);
            if (!action->error().isEmpty()) {
                planned.state = PLANNED_ACTION::STATE::error;
                planned.error = action->error();
            }
            for (LOGICAL_PATH const& source : qAsConst(planned.sources))
                if (source.text().startsWith(QLatin1String("<raw>/")))
                    plan_.raw_sources.insert(source);
            plan_.actions.push_back(std::move(planned));
        }
    }

    // Where the rules of an action's first source say anything of targets, as " (path:line, ...)". The planner does not
    // know which rule an action went by, so it names every one.
    QString target_rules(PLANNED_ACTION const& planned) const {
        QStringList places;
        for (QString const& name : session_.rules().rule_names()) {
            if (planned.sources.isEmpty() || planned.is_last_step)
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

    void refuse_targets_outside(std::size_t first) {
        for (std::size_t i = first; i < plan_.actions.size(); ++i) {
            PLANNED_ACTION& planned = plan_.actions[i];
            if (planned.state == PLANNED_ACTION::STATE::error)
                continue;
            for (ACTION_INTERFACE::TARGET_FILE const& target : qAsConst(planned.targets)) {
                QString const refusal = guard_.refusal(target.physical_path);
                if (refusal.isEmpty() || is_fragment_beside_source(planned, target))
                    continue;
                planned.state = PLANNED_ACTION::STATE::error;
                planned.error = refusal + target_rules(planned);
                planned.refused = true;
                break;
            }
        }
    }

    void find_producers(std::size_t first_new) {
        for (std::size_t i = first_new; i < plan_.actions.size(); ++i) {
            PLANNED_ACTION const& planned = plan_.actions[i];
            if (planned.state == PLANNED_ACTION::STATE::error)
                continue;
            for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets) {
                QString const file = QDir::cleanPath(target.physical_path);
                QString const place = guard_.place(file);
                auto const first = producers_.constFind(place);
                if (first != producers_.constEnd() && *first != i) {
                    PLANNED_ACTION const& other = plan_.actions[*first];
                    if (!is_fragment_beside_source(planned, target) || !are_of_one_file(planned, other)) {
                        plan_.conflicts.push_back(QStringLiteral("two actions would write %1\n  %2\n  %3")
                                                      .arg(CONSOLE::shown(file), described(other), described(planned)));
                        continue;
                    }
                    // A list in a folder that a link leads to has one fragment, which bears the name without the link.
                    bool const is_better = has_real_name(planned) && !has_real_name(other);
                    spare_.insert((is_better ? other : planned).action);
                    if (!is_better)
                        break;
                }
                if (std::optional<std::size_t> const other = file_and_folder(place, i)) {
                    plan_.conflicts.push_back(
                        QStringLiteral("%1 would be a file and a folder\n  %2\n  %3")
                            .arg(CONSOLE::shown(file), described(plan_.actions[*other]), described(planned)));
                    continue;
                }
                producers_.insert(place, i);
                // The database step lists what there will be.
                if (session_.project().image_database && !session_.files().contains(target.logical_path))
                    session_.know_file(target.physical_path, target.logical_path);
                if (FILE_ENTRY* const entry = session_.files().value(target.logical_path))
                    entry->producers.append(planned.action);
                session_.asset_graph().add_texture(
                    target.logical_path, planned.sources.isEmpty() ? QString() : planned.sources.first().text());
            }
        }
    }

    QString place_of_subject(PLANNED_ACTION const& planned) {
        return guard_.place(PATHS::physical_path(planned.sources.value(0)));
    }

    bool are_of_one_file(PLANNED_ACTION const& one, PLANNED_ACTION const& other) {
        return place_of_subject(one) == place_of_subject(other);
    }

    bool has_real_name(PLANNED_ACTION const& planned) {
        return place_of_subject(planned).endsWith(u'/' + planned.sources.value(0).section(u'/', 1));
    }

    /// The action that would make a file of one of the folders of `place`, or a folder of `place` itself. Which of the
    /// two won would be a matter of their order.
    std::optional<std::size_t> file_and_folder(QString const& place, std::size_t action) {
        if (auto const folder = folders_.constFind(place); folder != folders_.constEnd())
            return *folder;
        // Most actions write into the folder of the one before.
        int slash = place.lastIndexOf(u'/');
        if (place.leftRef(slash) == last_folder_)
            return {};
        last_folder_ = place.left(slash);
        for (; slash > 0; slash = place.lastIndexOf(u'/', slash - 1)) {
            QString const folder = place.left(slash);
            if (folders_.contains(folder))
                break;
            if (auto const file = producers_.constFind(folder); file != producers_.constEnd())
                return *file;
            folders_.insert(folder, action);
        }
        return {};
    }

    void find_shared_pages() {
        if (!plan_.conflicts.empty())
            return;
        for (SHARED_PAGE const& page : shared_pages(plan_.actions, producers_, guard_, session_.rules())) {
            auto const [first, second] = std::minmax(page.atlas, page.other);
            plan_.conflicts.push_back(
                QStringLiteral("two actions may write %1, the name of an atlas's page\n  %2\n  %3")
                    .arg(CONSOLE::shown(page.file), described(plan_.actions[first]), described(plan_.actions[second])));
        }
    }

    QString described(PLANNED_ACTION const& planned) const {
        std::optional<LOGICAL_PATH> const file = subject_of(planned);
        return (file ? shown_file(*file) + QStringLiteral(": ") : QString()) + planned.name + target_rules(planned);
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
            // Of two that need a file of one name for themselves, the second waits until the first has taken its away.
            for (PHYSICAL_PATH const& file : planned.action->working_files()) {
                std::size_t& last = working_files_.insert(std::pair(guard_.place(file), i)).first->second;
                need(std::exchange(last, i), true);
            }
            for (LOGICAL_PATH const& source : qAsConst(planned.sources)) {
                auto const producer = producers_.constFind(guard_.place(PATHS::physical_path(source)));
                if (producer != producers_.constEnd())
                    need(*producer, false);
            }
            // Any action may make files that it does not announce.
            for (std::size_t other = 0; planned.is_last_step && other < i; ++other)
                if (!plan_.actions[other].is_last_step)
                    need(other, true);
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
    TARGET_GUARD guard_;
    /// Where a target file really lies to its action's place: links may give one file two names.
    QHash<QString, std::size_t> producers_;
    /// The same of working files, to the last action that needs it.
    std::map<QString, std::size_t> working_files_;
    /// Actions that would make what another one makes of the same file.
    QSet<ACTION_INTERFACE const*> spare_;
    /// Every folder that holds such a file, at any depth, to the first action that needs it.
    QHash<QString, std::size_t> folders_;
    /// The folder that was looked at last.
    QString last_folder_;
};

}  // namespace

void ask_for_files(PLANNED_ACTION& planned, BUILD_SESSION& session) {
    planned.sources.clear();
    planned.targets.clear();
    QDateTime newest;
    planned.action->get_affected_files(planned.sources, planned.targets, newest, session.files(), session.rules());
    for (LOGICAL_PATH const& source : planned.action->unlisted_sources())
        if (session.files().contains(source))
            planned.sources.append(source);
    if (planned.is_last_step)
        add_unlisted_sources(planned, session);
    if (!planned.action->error().isEmpty())
        planned.targets.clear();
}

bool is_fragment_beside_source(PLANNED_ACTION const& planned, ACTION_INTERFACE::TARGET_FILE const& target) {
    if (!target.logical_path.text().endsWith(QLatin1String(".agf")))
        return false;
    return std::any_of(planned.sources.begin(), planned.sources.end(), [&](LOGICAL_PATH const& source) {
        if (!source.text().endsWith(QLatin1String(".texture_array")))
            return false;
        int const folder = source.text().lastIndexOf(u'/') + 1;
        QString const stem = source.section(u'.', 0, -2) + u'.';
        return target.logical_path.text().startsWith(stem) &&
               target.logical_path.text().lastIndexOf(u'/') + 1 == folder;
    });
}

bool is_older_file(ACTION_INTERFACE::TARGET_FILE const& target) {
    return target.temporary && target.logical_path.text().startsWith(QLatin1String("<raw>/"));
}

QString working_file_in_the_way(PLANNED_ACTION const& planned) {
    for (PHYSICAL_PATH const& file : planned.action->working_files())
        if (QFileInfo const info(file.text()); info.exists() || info.isSymLink())
            return file;
    return {};
}

QString refusal_of_file_in_the_way(QString const& file) {
    return CONSOLE::shown(file) + QStringLiteral(" is in the way: this action needs a file of that name for itself");
}

std::optional<LOGICAL_PATH> subject_of(PLANNED_ACTION const& planned) {
    if (planned.is_last_step)
        return planned.targets.isEmpty() ? std::nullopt : std::optional(planned.targets.first().logical_path);
    return planned.sources.isEmpty() ? std::nullopt : std::optional(planned.sources.first());
}

PLAN make_plan(BUILD_SESSION& session) {
    return PLANNER(session).plan();
}

void restrict_plan(PLAN& plan, std::vector<QString> const& paths) {
    std::vector<bool> wanted(plan.actions.size(), false);
    // Needs stand before those who need them, so one pass from the end finds them all.
    for (std::size_t i = plan.actions.size(); i-- > 0;) {
        PLANNED_ACTION const& planned = plan.actions[i];
        // It reads everything, so it would have everything built.
        if (planned.is_last_step)
            continue;
        for (LOGICAL_PATH const& source : planned.sources)
            for (QString const& path : paths)
                if (source.text() == path || source.text().startsWith(path.endsWith(u'/') ? path : path + u'/'))
                    wanted[i] = true;
        if (wanted[i])
            for (PLANNED_ACTION::NEED const& need : planned.needs)
                wanted[need.action] = true;
    }
    keep_actions(plan, wanted);
}

void keep_actions(PLAN& plan, std::vector<bool> const& is_wanted) {
    std::vector<std::size_t> place(plan.actions.size());
    std::vector<PLANNED_ACTION> kept;
    for (std::size_t i = 0; i < plan.actions.size(); ++i) {
        place[i] = kept.size();
        if (is_wanted[i])
            kept.push_back(std::move(plan.actions[i]));
    }
    for (PLANNED_ACTION& planned : kept) {
        std::erase_if(planned.needs, [&](PLANNED_ACTION::NEED const& need) { return !is_wanted[need.action]; });
        for (PLANNED_ACTION::NEED& need : planned.needs)
            need.action = place[need.action];
    }
    plan.actions = std::move(kept);
}

QString shown_file(LOGICAL_PATH const& path) {
    return CONSOLE::shown(PATHS::physical_path(path));
}

}  // namespace tool
