// One action as the build state keeps it, and what it shares with others: actions of one kind in one folder read the
// same rule values, so those are kept once for all of them.
#pragma once

#include "host/tool/action_record.hpp"
#include "host/tool/file_contents.hpp"

#include <optional>

namespace tool {

struct RECORDED_FILE {
    QString path;
    FILE_CONTENTS contents;
};

struct RECORDED_ACTION {
    enum class END : quint8 { succeeded, failed, made_no_file };

    /// The detailed name.
    QString name;
    /// How it ended. Unless it succeeded, nothing else is known.
    END end = END::succeeded;
    /// The setting's number.
    std::int64_t setting = 0;
    /// By logical path, in the action's own order.
    std::vector<RECORDED_FILE> sources;
    /// Announced ones that stay, and then those that were registered beyond them. One that was announced and not made
    /// does not exist.
    std::vector<RECORDED_FILE> targets;
    std::uint32_t announced_targets = 0;
    std::vector<framework::LOOK_UP> files;
    std::vector<framework::LOOK_UP> textures;
    std::vector<framework::ORIGIN> origins;
    /// Database tables by their names, with their files' contents.
    std::vector<RECORDED_FILE> tables;
    std::vector<framework::ASSET_CHANGE> asset_changes;
};

/// What many actions have in common.
struct ACTION_SETTING {
    CONTENT_HASH plugin;
    /// The action's class.
    QString kind;
    /// Paths of the action's own sources are written as "#" and the source's place from 0, or "#*" for every one of
    /// them.
    std::vector<framework::RULE_READ> rules;
};

inline QString const every_source = QStringLiteral("#*");

/// Why an action that ended so has to run again.
QString reason_of(RECORDED_ACTION::END end);

/// Puts the places of sources for their paths, and one entry for all sources that answered alike.
std::vector<framework::RULE_READ> with_source_places(std::vector<framework::RULE_READ> const& reads,
                                                     QVector<LOGICAL_PATH> const& sources);

QByteArray to_bytes(RECORDED_ACTION const& action);
QByteArray to_bytes(ACTION_SETTING const& setting);
/// Nothing when the bytes do not make sense.
std::optional<RECORDED_ACTION> to_recorded_action(QByteArray const& bytes);
std::optional<ACTION_SETTING> to_action_setting(QByteArray const& bytes);

QDataStream& operator<<(QDataStream& stream, RECORDED_FILE const& file);
QDataStream& operator>>(QDataStream& stream, RECORDED_FILE& file);

}  // namespace tool
