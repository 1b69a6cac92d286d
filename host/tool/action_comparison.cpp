// The order of the questions: first those that cost nothing, and among them the ones that explain most. A changed rule
// value says more than the new target that it led to.
#include "host/tool/action_comparison.hpp"

#include "processor/host/paths.hpp"

#include <QFileInfo>

#include <typeinfo>

namespace tool {

FILE_CONTENTS FILE_LOOKER::look(QString const& path, FILE_CONTENTS const& known) {
    auto const seen = seen_.constFind(path);
    if (seen == seen_.constEnd()) {
        FILE_CONTENTS const contents = contents_of(path, known);
        if (contents.exists && contents.stamp.exists() && !(contents.stamp == known.stamp))
            seen_.insert(path, contents);
        return contents;
    }
    FILE_CONTENTS const contents = contents_of(path, *seen);
    if (contents.exists && contents.stamp.exists())
        seen_[path] = contents;
    else
        seen_.remove(path);
    return contents;
}

QStringList lasting_targets(PLANNED_ACTION const& planned) {
    QStringList targets;
    for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets) {
        if (!target.temporary && !targets.contains(target.logical_path))
            targets.append(target.logical_path);
    }
    return targets;
}

QString kind_of(ACTION_INTERFACE const& action) {
    return QString::fromLatin1(typeid(action).name());
}

ACTION_COMPARISON::CHANGE ACTION_COMPARISON::compare(QString const& path, FILE_CONTENTS& recorded, bool& is_refreshed) {
    FILE_CONTENTS const now = looker_.look(path, recorded);
    if (now.exists != recorded.exists)
        return now.exists ? CHANGE::appeared : CHANGE::removed;
    if (!(now.hash == recorded.hash))
        return CHANGE::changed;
    if (!(now.stamp == recorded.stamp)) {
        recorded.stamp = now.stamp;
        is_refreshed = true;
    }
    return CHANGE::none;
}

std::optional<QString> ACTION_COMPARISON::source_list_change(PLANNED_ACTION const& planned,
                                                             RECORDED_ACTION const& recorded) const {
    std::size_t const count = static_cast<std::size_t>(planned.sources.size());
    std::size_t alike = 0;
    while (alike < count && alike < recorded.sources.size() &&
           planned.sources[static_cast<int>(alike)].text() == recorded.sources[alike].path)
        ++alike;
    if (alike == count && alike == recorded.sources.size())
        return {};
    // A list may name a file twice.
    QSet<QString> former;
    for (RECORDED_FILE const& source : recorded.sources)
        former.insert(source.path);
    QSet<QString> present;
    for (LOGICAL_PATH const& source : planned.sources) {
        if (!former.contains(source))
            return QStringLiteral("%1 is a new source").arg(shown_file(source));
        present.insert(source);
    }
    for (RECORDED_FILE const& source : recorded.sources)
        if (!present.contains(source.path))
            return QStringLiteral("%1 is no longer a source").arg(shown_file(LOGICAL_PATH(source.path)));
    return QStringLiteral("its sources are in another order");
}

std::optional<QString> ACTION_COMPARISON::target_list_change(PLANNED_ACTION const& planned,
                                                             RECORDED_ACTION const& recorded) const {
    QStringList const targets = lasting_targets(planned);
    QSet<QString> former;
    // What it registered, too: it may announce that once it is there.
    for (RECORDED_FILE const& target : recorded.targets)
        former.insert(target.path);
    for (QString const& target : targets)
        if (!former.contains(target))
            return QStringLiteral("%1 is a new target").arg(shown_file(LOGICAL_PATH(target)));
    // One that was announced and not made may be announced no more: an action may announce what it removes.
    for (std::uint32_t i = 0; i < recorded.announced_targets; ++i)
        if (recorded.targets[i].contents.exists && !targets.contains(recorded.targets[i].path))
            return QStringLiteral("%1 is no longer a target").arg(shown_file(LOGICAL_PATH(recorded.targets[i].path)));
    return {};
}

// Answers of the host other than rules.
std::optional<QString> ACTION_COMPARISON::answer_change(RECORDED_ACTION& recorded, bool& is_refreshed) {
    for (framework::LOOK_UP const& look_up : recorded.files) {
        LOGICAL_PATH const path(look_up.path);
        if (session_.files().contains(path) != look_up.found)
            return QStringLiteral("%1 %2; it looks for that file")
                .arg(shown_file(path), look_up.found ? QStringLiteral("was removed") : QStringLiteral("appeared"));
    }
    for (framework::LOOK_UP const& look_up : recorded.textures)
        if (session_.asset_graph().has_texture(look_up.path) != look_up.found)
            return QStringLiteral("the texture %1 is %2 made")
                .arg(shown_file(LOGICAL_PATH(look_up.path)),
                     look_up.found ? QStringLiteral("no longer") : QStringLiteral("now"));
    for (framework::ORIGIN const& origin : recorded.origins)
        if (session_.asset_graph().made_from(origin.texture) != origin.made_from)
            return QStringLiteral("%1 is made from something else").arg(shown_file(LOGICAL_PATH(origin.texture)));
    for (RECORDED_FILE& table : recorded.tables)
        if (compare(session_.project().tables.value(table.path), table.contents, is_refreshed) != CHANGE::none)
            return QStringLiteral("the table %1 changed").arg(table.path);
    return {};
}

std::optional<QString> ACTION_COMPARISON::reason_to_run(PLANNED_ACTION const& planned, RECORDED_ACTION& recorded,
                                                        ACTION_SETTING const& setting, bool& is_refreshed) {
    is_refreshed = false;
    if (recorded.end != RECORDED_ACTION::END::succeeded)
        return reason_of(recorded.end);
    if (!(setting.plugin == plugin_))
        return QStringLiteral("the plug-in changed");
    if (setting.kind != kind_of(*planned.action))
        return QStringLiteral("another kind of action makes it now");
    if (auto const reason = rules_.difference(recorded, setting))
        return reason;
    if (auto const reason = source_list_change(planned, recorded))
        return reason;
    if (auto const reason = target_list_change(planned, recorded))
        return reason;
    if (recorded.name != planned.name)
        return QStringLiteral("its name changed from \"%1\"").arg(recorded.name);

    // A file that it is to take away came back.
    for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
        if (is_older_file(target) && QFileInfo::exists(target.physical_path))
            return QStringLiteral("%1 is there and is to go").arg(shown_file(target.logical_path));

    for (std::size_t i = 0; i < recorded.sources.size(); ++i) {
        LOGICAL_PATH const& source = planned.sources[static_cast<int>(i)];
        switch (compare(PATHS::physical_path(source), recorded.sources[i].contents, is_refreshed)) {
        case CHANGE::none:
            break;
        case CHANGE::changed:
            return shown_file(source) + QStringLiteral(" changed");
        case CHANGE::removed:
            return shown_file(source) + QStringLiteral(" was removed");
        case CHANGE::appeared:
            return shown_file(source) + QStringLiteral(" appeared");
        }
    }
    if (auto const reason = answer_change(recorded, is_refreshed))
        return reason;
    for (RECORDED_FILE& target : recorded.targets) {
        LOGICAL_PATH const path(target.path);
        switch (compare(PATHS::physical_path(path), target.contents, is_refreshed)) {
        case CHANGE::none:
            break;
        case CHANGE::changed:
            return QStringLiteral("the target %1 was changed since it was made").arg(shown_file(path));
        case CHANGE::removed:
            return QStringLiteral("the target %1 is missing").arg(shown_file(path));
        case CHANGE::appeared:
            return QStringLiteral("the target %1 was made by somebody else").arg(shown_file(path));
        }
    }
    return {};
}

}  // namespace tool
