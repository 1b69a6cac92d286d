#include "host/tool/database_step.hpp"

#include "host/tool/plugin_call.hpp"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QSet>

#include <algorithm>

namespace tool {

namespace {

/// Hands on what happens to actions, and keeps in mind how they ended. That the run has parts is not told.
class RELAY : public RUN_OBSERVER {
public:
    explicit RELAY(std::vector<RUN_OBSERVER*> const& observers) : observers_(observers) {}

    void action_started(PLANNED_ACTION const& planned) override {
        for (RUN_OBSERVER* const observer : observers_)
            observer->action_started(planned);
    }
    void line(PLANNED_ACTION const& planned, QString const& text) override {
        for (RUN_OBSERVER* const observer : observers_)
            observer->line(planned, text);
    }
    void progress(PLANNED_ACTION const& planned, int value, int maximum) override {
        for (RUN_OBSERVER* const observer : observers_)
            observer->progress(planned, value, maximum);
    }
    void action_is_up_to_date(PLANNED_ACTION const& planned) override {
        for (RUN_OBSERVER* const observer : observers_)
            observer->action_is_up_to_date(planned);
    }
    void time_passed() override {
        for (RUN_OBSERVER* const observer : observers_)
            observer->time_passed();
    }
    void action_finished(PLANNED_ACTION const& planned, ACTION_RESULT const& result) override {
        bool const failed =
            result.status == ACTION_RESULT::STATUS::failed || result.status == ACTION_RESULT::STATUS::interrupted;
        (failed ? failed_ : succeeded_).insert(planned.id);
        for (RUN_OBSERVER* const observer : observers_)
            observer->action_finished(planned, result);
    }

    bool has_succeeded(PLANNED_ACTION const& planned) const { return succeeded_.contains(planned.id); }
    bool has_failed(PLANNED_ACTION const& planned) const { return failed_.contains(planned.id); }
    bool is_anything_made() const { return !succeeded_.isEmpty(); }

private:
    std::vector<RUN_OBSERVER*> const& observers_;
    QSet<int> succeeded_;
    QSet<int> failed_;
};

/// Brings the file map up to date, and asks the actions that ran once more for their targets: some know them only now.
void take_in_made_files(BUILD_SESSION& session, PLAN const& plan, RELAY const& relay) {
    session.know_made_files();
    PLUGIN_CALL const call(session.plugin_file());
    for (PLANNED_ACTION const& planned : plan.actions) {
        if (!relay.has_succeeded(planned))
            continue;
        QVector<LOGICAL_PATH> sources;
        QVector<ACTION_INTERFACE::TARGET_FILE> targets;
        QDateTime newest;
        planned.action->get_affected_files(sources, targets, newest, session.files(), session.rules());
        for (ACTION_INTERFACE::TARGET_FILE const& target : qAsConst(targets)) {
            FILE_ENTRY* const entry = session.files().value(target.logical_path);
            if (entry && !entry->producers.contains(planned.action))
                entry->producers.append(planned.action);
            if (!sources.isEmpty())
                session.asset_graph().add_texture(target.logical_path, sources.first());
        }
    }
}

/// The last step as a plan of its own, with the sources of now.
PLAN last_step(std::vector<PLANNED_ACTION> actions, BUILD_SESSION& session, PLAN const& before, RELAY const& relay) {
    PLUGIN_CALL const call(session.plugin_file());
    for (PLANNED_ACTION& planned : actions) {
        for (PLANNED_ACTION::NEED const& need : planned.needs) {
            // Actions of the last step do not need each other.
            PLANNED_ACTION const& needed = before.actions[need.action];
            if (need.optional || planned.refused || !relay.has_failed(needed) ||
                !planned.action->auto_fail_if_dependency_failed())
                continue;
            planned.refused = true;
            planned.state = PLANNED_ACTION::STATE::error;
            planned.error = QStringLiteral("Not run: it needs \"%1\", which failed").arg(needed.name);
        }
        planned.needs.clear();
        ask_for_files(planned, session);
    }
    PLAN step;
    step.actions = std::move(actions);
    return step;
}

/// Every name that an "Expansion" rule gives.
QSet<QString> named_expansions(framework::PROJECT_RULE_CACHE const& rules) {
    QSet<QString> names;
    for (framework::RULE_FILE const& file : rules.files())
        for (framework::RULE_TABLE const& table : file.rules)
            for (RULE_VALUES::VALUE const& value : table.values)
                if (table.name == QLatin1String("Expansion") &&
                    value.property.compare(QLatin1String("Name"), Qt::CaseInsensitive) == 0)
                    names.insert(value.value.toString());
    names.remove(QString());
    return names;
}

/// The database that the action would write.
QString database_of(ACTION_INTERFACE& action, BUILD_SESSION& session) {
    QVector<LOGICAL_PATH> sources;
    QVector<ACTION_INTERFACE::TARGET_FILE> targets;
    QDateTime newest;
    action.get_affected_files(sources, targets, newest, session.files(), session.rules());
    return targets.isEmpty() ? QString() : targets.first().physical_path.text();
}

}  // namespace

std::vector<std::unique_ptr<ACTION_INTERFACE>>
make_database_actions(BUILD_SESSION& session, CREATE_IMAGE_DATABASE_ACTION& create, PROCESSOR_INTERFACE& processor) {
    std::vector<std::unique_ptr<ACTION_INTERFACE>> actions;
    actions.emplace_back(create(processor, QString()));
    QString const retail = QStringLiteral("Retail");
    if (!session.rules().get_global(retail).value(retail).toBool())
        return actions;
    QStringList named = named_expansions(session.rules()).values();
    named.sort();
    for (QString const& name : qAsConst(named))
        actions.emplace_back(create(processor, name));
    QSet<QString> databases;
    for (auto const& action : actions)
        databases.insert(database_of(*action, session));
    for (QString const& key : session.tables().keys(QStringLiteral("texc_expansions"))) {
        if (named.contains(key, Qt::CaseInsensitive))
            continue;
        std::unique_ptr<ACTION_INTERFACE> action(create(processor, key));
        QString const database = database_of(*action, session);
        // A row without an extension, or with that of another, means a database that is still made.
        bool const is_left = QFileInfo::exists(database) || QFileInfo::exists(database_fragment(database));
        if (databases.contains(database) || !is_left)
            continue;
        databases.insert(database);
        actions.push_back(std::move(action));
    }
    return actions;
}

QString database_fragment(QString const& database) {
    return database.section(u'.', 0, -2) + QStringLiteral(".agf");
}

void add_unlisted_sources(PLANNED_ACTION& planned, BUILD_SESSION& session) {
    QString const extension = QStringLiteral(".dds");
    for (auto const& [path, entry] : session.files())
        if (entry != nullptr && path.text().startsWith(QLatin1String("<working>/")) &&
            !path.text().endsWith(extension) && entry->physical_path.text().endsWith(extension, Qt::CaseInsensitive))
            planned.sources.append(path);
}

RUN_COUNTS run_with_last_step(PLAN plan, BUILD_SESSION& session, STEPPED_RUN const& stepped) {
    auto const is_last = [](PLANNED_ACTION const& planned) {
        return planned.is_last_step;
    };
    auto const first = std::find_if(plan.actions.begin(), plan.actions.end(), is_last);
    if (first == plan.actions.end())
        return stepped.run_part(plan, stepped.observers);

    QElapsedTimer clock;
    clock.start();
    for (RUN_OBSERVER* const observer : stepped.observers)
        observer->run_started(plan);
    std::size_t const total = plan.actions.size();
    std::vector<PLANNED_ACTION> last(std::make_move_iterator(first), std::make_move_iterator(plan.actions.end()));
    plan.actions.erase(first, plan.actions.end());

    RELAY relay(stepped.observers);
    RUN_COUNTS counts = stepped.run_part(plan, {&relay});
    PLAN step;
    if (counts.interrupted || (stepped.fail_fast && counts.failed > 0)) {
        counts.not_run += last.size();
    } else {
        if (relay.is_anything_made())
            take_in_made_files(session, plan, relay);
        step = last_step(std::move(last), session, plan, relay);
        RUN_COUNTS const more = stepped.run_part(step, {&relay});
        counts.succeeded += more.succeeded;
        counts.made_no_file += more.made_no_file;
        counts.up_to_date += more.up_to_date;
        counts.failed += more.failed;
        counts.surroundings_failed += more.surroundings_failed;
        counts.not_run += more.not_run;
        counts.interrupted = more.interrupted;
    }
    counts.total = total;
    counts.milliseconds = clock.elapsed();
    for (RUN_OBSERVER* const observer : stepped.observers)
        observer->run_finished(counts);
    return counts;
}

}  // namespace tool
