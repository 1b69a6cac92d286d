// The part of the state that is about files rather than actions: which of those that earlier builds made no action
// makes any more, and which an action makes without announcing them.
#include "host/tool/build_journal.hpp"
#include "host/tool/build_state.hpp"

#include "processor/host/paths.hpp"

#include <algorithm>

namespace tool {

namespace {

using TABLE = STATE_STORE::TABLE;

QString physical(LOGICAL_PATH const& path) {
    return PATHS::physical_path(path);
}

}  // namespace

bool BUILD_STATE::is_registered_by_another(PLANNED_ACTION const& planned, QString const& file) {
    auto const registers = [&](std::size_t row, QString const* path) {
        std::optional<RECORDED_ACTION> const action = to_recorded_action(rows_[row].content);
        for (std::size_t i = action ? action->announced_targets : 0; action && i < action->targets.size(); ++i) {
            if (!path)
                registered_->insert(action->targets[i].path, row);
            else if (action->targets[i].path == *path)
                return true;
        }
        return false;
    };
    if (!registered_) {
        registered_.emplace();
        for (std::size_t row = 0; row < rows_.size(); ++row)
            registers(row, nullptr);
    }
    QString const path = PATHS::logical_path(PHYSICAL_PATH(file));
    std::optional<std::size_t> const own = claims_[planned.action].row;
    QList<std::size_t> const rows = registered_->values(path);
    // What a row says may have changed since the table was made.
    return std::any_of(rows.begin(), rows.end(),
                       [&](std::size_t row) { return rows_[row].is_claimed && own != row && registers(row, &path); });
}

bool BUILD_STATE::is_made_by_build(PLANNED_ACTION const& planned, QString const& path) {
    QString const file = physical(LOGICAL_PATH(path));
    FILE_CONTENTS const now = looker_.look(file);
    std::optional<std::size_t> const own = claims_[planned.action].compared;
    for (std::size_t row = 0; row < rows_.size(); ++row)
        if (std::optional<RECORDED_ACTION> const action = to_recorded_action(rows_[row].content))
            for (RECORDED_FILE const& target : action->targets)
                if (target.path == path && target.contents.exists && (own == row || target.contents.hash == now.hash))
                    return true;
    for (STATE_STORE::RECORD const& record : leftovers_)
        if (record.key == path && to_contents(record.content).hash == now.hash)
            return true;
    // Before a build goes on after another one that was cut off, it removes these.
    BUILD_JOURNAL::LEFT_OVER const left = BUILD_JOURNAL::left_over(session_.project().state_folder);
    return std::any_of(left.actions.begin(), left.actions.end(), [&](UNFINISHED_ACTION const& unfinished) {
        return unfinished_files(unfinished, left.last_sign_of_life).contains(file);
    });
}

QSet<QString> BUILD_STATE::current_targets() const {
    QSet<QString> targets;
    for (CLAIM const& claim : claims_)
        for (QString const& target : claim.key.split(u'\n'))
            targets.insert(target);
    for (ROW const& row : rows_) {
        if (!row.is_claimed)
            continue;
        if (std::optional<RECORDED_ACTION> const action = to_recorded_action(row.content))
            for (std::size_t i = action->announced_targets; i < action->targets.size(); ++i)
                targets.insert(action->targets[i].path);
    }
    return targets;
}

std::vector<BUILD_STATE::STALE_TARGET> BUILD_STATE::stale_targets() {
    std::map<QString, FILE_CONTENTS> former;
    for (STATE_STORE::RECORD const& record : leftovers_)
        former.insert_or_assign(record.key, to_contents(record.content));
    for (ROW const& row : rows_) {
        if (row.is_claimed)
            continue;
        if (std::optional<RECORDED_ACTION> const action = to_recorded_action(row.content))
            for (RECORDED_FILE const& target : action->targets)
                if (target.contents.exists)
                    former.insert_or_assign(target.path, target.contents);
    }
    std::vector<STALE_TARGET> stale;
    if (former.empty())
        return stale;
    QSet<QString> const current = current_targets();
    for (auto const& [path, contents] : former) {
        if (current.contains(path))
            continue;
        FILE_CONTENTS const now = looker_.look(physical(LOGICAL_PATH(path)), contents);
        if (now.exists && now.hash == contents.hash)
            stale.push_back({LOGICAL_PATH(path), now});
    }
    return stale;
}

std::vector<LOGICAL_PATH> BUILD_STATE::known_targets() {
    std::vector<LOGICAL_PATH> targets;
    for (STALE_TARGET const& stale : stale_targets())
        targets.push_back(stale.path);
    for (ROW const& row : rows_) {
        std::optional<RECORDED_ACTION> const action = to_recorded_action(row.content);
        if (!action || !row.is_claimed)
            continue;
        for (std::size_t i = action->announced_targets; i < action->targets.size(); ++i) {
            RECORDED_FILE const& target = action->targets[i];
            FILE_CONTENTS const now = looker_.look(physical(LOGICAL_PATH(target.path)), target.contents);
            if (now.exists && now.hash == target.contents.hash)
                targets.emplace_back(target.path);
        }
    }
    std::sort(targets.begin(), targets.end());
    return targets;
}

// Records of actions that are no more, once none of their files is there as they left it.
void BUILD_STATE::drop_what_is_gone() {
    bool const all_are_claimed = std::all_of(rows_.begin(), rows_.end(), [](ROW const& row) { return row.is_claimed; });
    if (all_are_claimed && leftovers_.empty())
        return;
    QSet<QString> stale;
    for (STALE_TARGET const& target : stale_targets())
        stale.insert(target.path);
    for (ROW const& row : rows_) {
        if (row.is_claimed)
            continue;
        std::optional<RECORDED_ACTION> const action = to_recorded_action(row.content);
        if (!action || std::none_of(action->targets.begin(), action->targets.end(),
                                    [&](RECORDED_FILE const& target) { return stale.contains(target.path); }))
            store_.erase(TABLE::actions, row.id);
    }
    for (STATE_STORE::RECORD const& record : leftovers_)
        if (!stale.contains(record.key))
            store_.erase(TABLE::leftovers, record.id);
}

}  // namespace tool
