// Why an action has to run: what is no longer as it was when the action was recorded. The one place that says what "up
// to date" means.
#pragma once

#include "host/tool/planner.hpp"
#include "host/tool/rule_comparison.hpp"

namespace tool {

/// Looks at files, and reads none twice that did not change.
class FILE_LOOKER {
public:
    /// `known` holds for the file if it has the file's stamp.
    FILE_CONTENTS look(QString const& path, FILE_CONTENTS const& known = {});

private:
    QHash<QString, FILE_CONTENTS> seen_;
};

class ACTION_COMPARISON {
public:
    /// `plugin`: what the plug-in's libraries hold now.
    ACTION_COMPARISON(BUILD_SESSION& session, FILE_LOOKER& looker, CONTENT_HASH const& plugin)
        : session_(session),
          looker_(looker),
          rules_(session),
          plugin_(plugin) {}

    /// The reason in words; nothing when the action is up to date. `recorded` gets the stamps of files that were read
    /// and found unchanged; `is_refreshed` says whether there were any.
    std::optional<QString> reason_to_run(PLANNED_ACTION const& planned, RECORDED_ACTION& recorded,
                                         ACTION_SETTING const& setting, bool& is_refreshed);

private:
    enum class CHANGE { none, changed, removed, appeared };

    CHANGE compare(QString const& path, FILE_CONTENTS& recorded, bool& is_refreshed);
    std::optional<QString> source_list_change(PLANNED_ACTION const& planned, RECORDED_ACTION const& recorded) const;
    std::optional<QString> target_list_change(PLANNED_ACTION const& planned, RECORDED_ACTION const& recorded) const;
    std::optional<QString> answer_change(RECORDED_ACTION& recorded, bool& is_refreshed);

    BUILD_SESSION& session_;
    FILE_LOOKER& looker_;
    RULE_COMPARISON rules_;
    CONTENT_HASH plugin_;
};

/// The logical paths of the targets that are to stay, each once.
QStringList lasting_targets(PLANNED_ACTION const& planned);

/// The action's class, by a name that holds for one plug-in.
QString kind_of(ACTION_INTERFACE const& action);

}  // namespace tool
