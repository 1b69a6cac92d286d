#include "host/tool/build_state.hpp"

#include "host/tool/change_times.hpp"
#include "processor/host/paths.hpp"

#include <QFileInfo>

#include <algorithm>
#include <chrono>
#include <limits>
#include <thread>
#include <tuple>

namespace tool {

namespace {

using TABLE = STATE_STORE::TABLE;

QString physical(QString const& logical) {
    return PATHS::physical_path(LOGICAL_PATH(logical));
}

// What makes an action the same one in the next build: what it makes, or if it announces nothing, what it is called.
QString key_of(PLANNED_ACTION const& planned) {
    QStringList const targets = lasting_targets(planned);
    if (!targets.isEmpty())
        return targets.join(u'\n');
    QString const source = planned.sources.isEmpty() ? QString() : planned.sources.first().text();
    return planned.name + u'\n' + source;
}

bool is_settled(RECORDED_ACTION const& action) {
    auto const is_open = [](RECORDED_FILE const& file) {
        return file.contents.exists && !file.contents.stamp.exists();
    };
    return std::none_of(action.sources.begin(), action.sources.end(), is_open) &&
           std::none_of(action.targets.begin(), action.targets.end(), is_open);
}

}  // namespace

BUILD_STATE::BUILD_STATE(BUILD_SESSION& session, CONSOLE& console)
    : session_(session),
      console_(console),
      store_(session.project().state_folder) {
}

BUILD_STATE::~BUILD_STATE() = default;

void BUILD_STATE::open(PLAN const& plan) {
    // Nothing is tried in the raw folder, which may lie on one of these devices or on a third.
    learn_change_times(session_.project().state_folder);
    learn_change_times(session_.project().working);
    read_rows();
    identify_plugin();
    comparison_.emplace(session_, looker_, plugin_);
    claim(plan);
    find_former(plan);
}

void BUILD_STATE::read_rows() {
    QString warning;
    for (STATE_STORE::RECORD& record : store_.read(TABLE::settings, warning)) {
        next_id_ = std::max(next_id_, record.id + 1);
        if (std::optional<ACTION_SETTING> setting = to_action_setting(record.content)) {
            setting_ids_.insert(record.content, record.id);
            settings_.emplace(record.id, std::move(*setting));
        }
    }
    std::vector<STATE_STORE::RECORD> actions = store_.read(TABLE::actions, warning);
    rows_.reserve(actions.size());
    rows_by_key_.reserve(static_cast<int>(actions.size()));
    for (STATE_STORE::RECORD& record : actions) {
        next_id_ = std::max(next_id_, record.id + 1);
        rows_by_key_.insert(record.key, rows_.size());
        rows_.push_back({record.id, std::move(record.key), std::move(record.content)});
    }
    leftovers_ = store_.read(TABLE::leftovers, warning);
    for (STATE_STORE::RECORD const& record : leftovers_)
        next_id_ = std::max(next_id_, record.id + 1);
    if (!warning.isEmpty())
        console_.warning(warning);
    if (!is_sound())
        console_.error(store_.error());
}

// Where the linker gave a library no name for its build, what it holds counts. Libraries are large, so that is kept
// with their stamps.
void BUILD_STATE::identify_plugin() {
    QString warning;
    std::vector<STATE_STORE::RECORD> known = store_.read(TABLE::libraries, warning);
    for (STATE_STORE::RECORD const& record : known)
        next_id_ = std::max(next_id_, record.id + 1);
    QByteArray together;
    for (MAPPED_LIBRARY const& library : session_.plugin_libraries()) {
        QString const file = QFileInfo(library.path).absoluteFilePath();
        if (!library.build_id.isEmpty()) {
            together += library.build_id;
            continue;
        }
        auto record = std::find_if(known.begin(), known.end(), [&](auto const& entry) { return entry.key == file; });
        FILE_CONTENTS const former = record == known.end() ? FILE_CONTENTS() : to_contents(record->content);
        FILE_CONTENTS const now = looker_.look(file, former);
        if (!(now.stamp == former.stamp))
            new_libraries_.push_back({record == known.end() ? next_id_++ : record->id, file, to_bytes(now)});
        together += to_bytes(FILE_CONTENTS{now.exists, now.hash, {}});
    }
    plugin_ = hash_of(together);
}

void BUILD_STATE::claim(PLAN const& plan) {
    claims_.reserve(static_cast<int>(plan.actions.size()));
    QHash<QString, int> times;
    // Those that cannot run may announce the targets of others, who come first therefore.
    for (auto const state : {PLANNED_ACTION::STATE::run, PLANNED_ACTION::STATE::error}) {
        for (PLANNED_ACTION const& planned : plan.actions) {
            if (planned.state != state)
                continue;
            CLAIM claim{key_of(planned), {}, {}};
            if (int const time = ++times[claim.key]; time > 1)
                claim.key += u'\n' + QString::number(time);
            auto const row = rows_by_key_.constFind(claim.key);
            if (row != rows_by_key_.constEnd()) {
                claim.row = claim.compared = *row;
                rows_[*row].is_claimed = true;
            }
            claims_.insert(planned.action, std::move(claim));
        }
    }
}

// An action with other targets than any recorded one may still be one that is known. When it announces nothing but what
// a recorded one made, it is that one: an atlas announces its pages once they are there. Otherwise the change of its
// rules may explain the new targets.
void BUILD_STATE::find_former(PLAN const& plan) {
    QHash<QString, std::size_t> by_source;
    QHash<QString, std::size_t> by_target;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        if (rows_[i].is_claimed)
            continue;
        std::optional<RECORDED_ACTION> const action = to_recorded_action(rows_[i].content);
        if (!action)
            continue;
        if (!action->sources.empty())
            by_source.insert(action->name + u'\n' + action->sources.front().path, i);
        for (RECORDED_FILE const& target : action->targets)
            by_target.insert(action->name + u'\n' + target.path, i);
    }
    if (by_source.isEmpty() && by_target.isEmpty())
        return;
    constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
    for (PLANNED_ACTION const& planned : plan.actions) {
        CLAIM& claim = claims_[planned.action];
        if (claim.row)
            continue;
        QStringList const targets = lasting_targets(planned);
        auto const row_of = [&](QString const& target) {
            return by_target.value(planned.name + u'\n' + target, none);
        };
        std::size_t const row = targets.isEmpty() ? none : row_of(targets.first());
        if (planned.state == PLANNED_ACTION::STATE::run && row != none && !rows_[row].is_claimed &&
            std::all_of(targets.begin(), targets.end(), [&](QString const& target) { return row_of(target) == row; })) {
            claim.row = claim.compared = row;
            rows_[row].is_claimed = true;
            rows_[row].key = claim.key;
        } else if (!planned.sources.isEmpty()) {
            auto const found = by_source.constFind(planned.name + u'\n' + planned.sources.first());
            if (found != by_source.constEnd())
                claim.compared = *found;
        }
    }
}

ACTION_SETTING const* BUILD_STATE::setting(std::int64_t id) const {
    auto const found = settings_.find(id);
    return found == settings_.end() ? nullptr : &found->second;
}

std::optional<QString> BUILD_STATE::reason_to_run(PLANNED_ACTION const& planned) {
    CLAIM const& claim = claims_[planned.action];
    if (!claim.compared) {
        QStringList const targets = lasting_targets(planned);
        auto const there = std::find_if(targets.begin(), targets.end(),
                                        [](QString const& target) { return QFileInfo::exists(physical(target)); });
        return there == targets.end() ? QStringLiteral("never built")
                                      : QStringLiteral("nothing is known of how the target %1 was made")
                                            .arg(shown_file(LOGICAL_PATH(*there)));
    }
    std::optional<RECORDED_ACTION> recorded = to_recorded_action(rows_[*claim.compared].content);
    if (recorded && recorded->end != RECORDED_ACTION::END::succeeded)
        return reason_of(recorded->end);
    ACTION_SETTING const* const shared = recorded ? setting(recorded->setting) : nullptr;
    if (!shared)
        return QStringLiteral("the build state is damaged");
    bool is_refreshed = false;
    auto const reason = comparison_->reason_to_run(planned, *recorded, *shared, is_refreshed);
    if (reason)
        return reason;
    if (!recorded->asset_changes.empty())
        asset_changes_.insert(planned.action, recorded->asset_changes);
    if (is_refreshed)
        refreshed_.insert_or_assign(*claim.compared, std::move(*recorded));
    return {};
}

bool BUILD_STATE::is_up_to_date_now(PLANNED_ACTION& planned) {
    if (!planned.awaits_needs || planned.state != PLANNED_ACTION::STATE::run)
        return false;
    if (std::optional<QString> const reason = reason_to_run(planned)) {
        planned.reason = *reason;
        return false;
    }
    keep(planned);
    return true;
}

void BUILD_STATE::keep(PLANNED_ACTION const& planned) {
    CLAIM const& claim = claims_[planned.action];
    if (!claim.row)
        return;
    if (auto const refreshed = refreshed_.find(*claim.row); refreshed != refreshed_.end()) {
        write(refreshed->first, refreshed->second);
        refreshed_.erase(refreshed);
    }
    framework::replay(asset_changes_.take(planned.action), session_.asset_graph());
}

void BUILD_STATE::starting(PLANNED_ACTION const& planned) {
    std::vector<SNAPSHOT> snapshots;
    for (LOGICAL_PATH const& source : planned.sources) {
        QString const path = PATHS::physical_path(source);
        SNAPSHOT snapshot{stamp_of(path), {}};
        if (snapshot.stamp.exists() && !is_settled(snapshot.stamp))
            snapshot.hash = looker_.look(path).hash;
        snapshots.push_back(snapshot);
    }
    snapshots_.insert(planned.action, std::move(snapshots));
}

std::vector<RECORDED_FILE> BUILD_STATE::source_contents(PLANNED_ACTION const& planned) {
    std::vector<SNAPSHOT> const before = snapshots_.take(planned.action);
    std::vector<RECORDED_FILE> sources;
    for (std::size_t i = 0; i < static_cast<std::size_t>(planned.sources.size()); ++i) {
        LOGICAL_PATH const& source = planned.sources[static_cast<int>(i)];
        QString const path = PATHS::physical_path(source);
        FILE_STAMP const stamp = stamp_of(path);
        FILE_CONTENTS contents = looker_.look(path);
        bool const is_sure =
            i < before.size() && before[i].stamp == stamp && (!before[i].hash || *before[i].hash == contents.hash);
        // Nothing has this hash, so the source counts as changed next time.
        if (!is_sure)
            contents = {true, {}, {}};
        sources.push_back({source, contents});
    }
    return sources;
}

// What the action asked while it ran, and what processors asked of its sources before they made it.
std::vector<framework::RULE_READ> BUILD_STATE::all_rule_reads(PLANNED_ACTION const& planned,
                                                              framework::READS const& reads) const {
    std::vector<framework::RULE_READ> all = reads.rules;
    framework::RULE_QUESTIONS const& asked = session_.rule_questions();
    all.insert(all.end(), asked.globals.begin(), asked.globals.end());
    auto const topic = asked.by_topic.find(planned.action->rule_topic());
    if (topic != asked.by_topic.end()) {
        for (LOGICAL_PATH const& source : planned.sources) {
            for (auto const& [rule_name, property] : topic->second) {
                RULE const rule = session_.rules().get(source, rule_name);
                QVariant const value = property.isEmpty() ? QVariant(rule.values() != nullptr)
                                       : rule.values()    ? rule.values()->value(property)
                                                          : QVariant();
                all.push_back({source, rule_name, property, value});
            }
        }
    }
    auto const question = [](auto const& read) {
        return std::tie(read.path, read.rule, read.property);
    };
    std::sort(all.begin(), all.end(),
              [&](auto const& left, auto const& right) { return question(left) < question(right); });
    all.erase(std::unique(all.begin(), all.end(),
                          [&](auto const& left, auto const& right) { return question(left) == question(right); }),
              all.end());
    return all;
}

std::int64_t BUILD_STATE::setting_id(ACTION_SETTING const& setting) {
    QByteArray const bytes = to_bytes(setting);
    auto const known = setting_ids_.constFind(bytes);
    if (known != setting_ids_.constEnd())
        return *known;
    std::int64_t const id = next_id_++;
    store_.put(TABLE::settings, id, setting.kind, bytes);
    setting_ids_.insert(bytes, id);
    settings_.emplace(id, setting);
    return id;
}

// What the action made, which the next build holds against what it finds: not what somebody has put there since.
FILE_CONTENTS BUILD_STATE::target_contents(QString const& path, WRITTEN_FILES const& written_files) {
    FILE_CONTENTS const found = looker_.look(path);
    auto const written = written_files.constFind(path);
    bool const is_own = written == written_files.constEnd() || (found.exists && found.hash == *written);
    return is_own ? found : FILE_CONTENTS{true, *written, {}};
}

void BUILD_STATE::remember(PLANNED_ACTION const& planned, ACTION_RESULT const& result) {
    framework::READS const& reads = result.record.reads;
    RECORDED_ACTION action;
    action.name = planned.name;
    action.sources = source_contents(planned);
    QStringList targets = lasting_targets(planned);
    action.announced_targets = static_cast<std::uint32_t>(targets.size());
    for (ACTION_INTERFACE::REGISTERED_FILE const& file : result.record.registered) {
        QString const path = PATHS::logical_path(file.path);
        if (file.kind == ACTION_INTERFACE::REGISTERED_FILE::KIND::added && !targets.contains(path) &&
            (result.record.written.contains(physical(path)) || QFileInfo::exists(physical(path))))
            targets.append(path);
    }
    for (QString const& target : qAsConst(targets))
        action.targets.push_back({target, target_contents(physical(target), result.record.written)});
    // An action that looks whether its own target is there finds it the next time; what became of it is asked anyway.
    action.files = reads.files;
    for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
        if (target.temporary)
            targets.append(target.logical_path);
    std::erase_if(action.files, [&](framework::LOOK_UP const& look_up) { return targets.contains(look_up.path); });
    // A file that the action itself took away is one that it would not find now.
    for (framework::LOOK_UP& look_up : action.files)
        for (ACTION_INTERFACE::REGISTERED_FILE const& file : result.record.registered)
            if (file.kind == ACTION_INTERFACE::REGISTERED_FILE::KIND::removed && look_up.found &&
                PATHS::logical_path(file.path).text() == look_up.path && !QFileInfo::exists(file.path))
                look_up.found = false;
    action.textures = reads.textures;
    action.origins = reads.origins;
    for (QString const& table : reads.tables)
        action.tables.push_back({table, looker_.look(session_.project().tables.value(table))});
    action.asset_changes = reads.asset_changes;
    action.setting = setting_id(
        {plugin_, kind_of(*planned.action), with_source_places(all_rule_reads(planned, reads), planned.sources)});
    store(planned, action);
}

void BUILD_STATE::forget(PLANNED_ACTION const& planned, RECORDED_ACTION::END end) {
    snapshots_.remove(planned.action);
    RECORDED_ACTION action;
    action.name = planned.name;
    action.end = end;
    for (LOGICAL_PATH const& source : planned.sources)
        action.sources.push_back({source, {}});
    store(planned, action);
}

void BUILD_STATE::store(PLANNED_ACTION const& planned, RECORDED_ACTION const& action) {
    CLAIM& claim = claims_[planned.action];
    if (!claim.row) {
        claim.row = rows_.size();
        rows_by_key_.insert(claim.key, rows_.size());
        rows_.push_back({next_id_++, claim.key, {}, true});
    } else if (auto const former = to_recorded_action(rows_[*claim.row].content)) {
        leave_behind(*former, action);
    }
    claim.compared = claim.row;
    refreshed_.erase(*claim.row);
    write(*claim.row, action);
    if (!is_settled(action))
        unsettled_.push_back({*claim.row, action});
    settle(false);
    store_.commit();
}

void BUILD_STATE::write(std::size_t row, RECORDED_ACTION const& action) {
    rows_[row].content = to_bytes(action);
    store_.put(TABLE::actions, rows_[row].id, rows_[row].key, rows_[row].content);
}

// Files that the action made before and did not make this time.
void BUILD_STATE::leave_behind(RECORDED_ACTION const& former, RECORDED_ACTION const& now) {
    for (RECORDED_FILE const& file : former.targets) {
        bool const is_made = std::any_of(now.targets.begin(), now.targets.end(),
                                         [&](auto const& made) { return made.path == file.path; });
        if (is_made || !file.contents.exists)
            continue;
        leftovers_.push_back({next_id_++, file.path, to_bytes(file.contents)});
        store_.put(TABLE::leftovers, leftovers_.back().id, leftovers_.back().key, leftovers_.back().content);
    }
}

// Files that had only just been written when they were recorded are looked at again, so that the next build can go by
// their stamps. Their contents have to be those recorded, or somebody has changed them since.
void BUILD_STATE::settle(bool wait) {
    std::vector<UNSETTLED> left;
    auto const now = std::chrono::steady_clock::now();
    for (UNSETTLED& unsettled : unsettled_) {
        if (!wait && now < unsettled.next_look) {
            left.push_back(std::move(unsettled));
            continue;
        }
        bool is_open = false;
        bool is_refreshed = false;
        for (std::vector<RECORDED_FILE>* const files : {&unsettled.action.sources, &unsettled.action.targets}) {
            for (RECORDED_FILE& file : *files) {
                if (!file.contents.exists || file.contents.stamp.exists() || file.contents.hash == CONTENT_HASH())
                    continue;
                QString const path = physical(file.path);
                std::int64_t const time = time_until_settled(stamp_of(path));
                // Not to be had by waiting.
                if (time < 0)
                    continue;
                if (time > 0 && wait)
                    std::this_thread::sleep_for(std::chrono::nanoseconds(time));
                if (time > 0 && !wait) {
                    is_open = true;
                    unsettled.next_look = now + std::chrono::nanoseconds(time);
                    break;
                }
                FILE_CONTENTS const found = looker_.look(path);
                if (found.exists && found.hash == file.contents.hash && found.stamp.exists()) {
                    file.contents.stamp = found.stamp;
                    is_refreshed = true;
                }
            }
        }
        if (is_refreshed)
            write(unsettled.row, unsettled.action);
        if (is_open)
            left.push_back(std::move(unsettled));
    }
    unsettled_ = std::move(left);
}

void BUILD_STATE::finish() {
    settle(true);
    if (!rows_.empty())
        for (STATE_STORE::RECORD const& library : new_libraries_)
            store_.put(TABLE::libraries, library.id, library.key, library.content);
    new_libraries_.clear();
    drop_what_is_gone();
    drop_unused_settings();
    store_.commit();
    if (!store_.error().isEmpty())
        console_.error(store_.error() + QStringLiteral("; the next build runs these actions again"));
}

// Every change of a rule leaves settings behind that no action has any more. They are small, so a few may stay.
void BUILD_STATE::drop_unused_settings() {
    if (settings_.size() < 100 + rows_.size() / 4)
        return;
    QSet<std::int64_t> used;
    for (ROW const& row : rows_)
        if (std::optional<RECORDED_ACTION> const action = to_recorded_action(row.content))
            used.insert(action->setting);
    // A later part of the build must not take one for known that is no longer stored.
    std::erase_if(settings_, [&](auto const& entry) {
        if (used.contains(entry.first))
            return false;
        store_.erase(TABLE::settings, entry.first);
        setting_ids_.remove(to_bytes(entry.second));
        return true;
    });
}

}  // namespace tool
