// The one place that decides which work a set of source files needs. Every decision is taken from the suffix of a
// file's logical path, from the siblings that stand beside it in the file table, and from the rules "Texture",
// "TextureOld" and "Atlas". Mistakes of the project (a missing sibling, two sources for one target, an incomplete rule)
// become actions that report them; nothing stops the pass.
#pragma once

#include "processor/host/action_convert.hpp"
#include "processor/host/file_map.hpp"
#include "processor/host/processor_interface.hpp"
#include "processor/host/rule_cache.hpp"

#include <QHash>
#include <QMultiHash>
#include <QRegularExpression>
#include <QSet>
#include <QString>

#include <memory>
#include <vector>

class ACTION_ATLAS;

/// One pass over the file table. Made for one call of create_actions and thrown away.
class ACTION_DISPATCH {
public:
    ACTION_DISPATCH(PROCESSOR_INTERFACE& processor, FILE_MAP const& files, RULE_CACHE const& rules);

    /// New actions: per file, in the order of the table, its conversions or its error, then its atlas or atlas error.
    /// The caller owns them.
    QVector<ACTION_INTERFACE*> create_actions();

private:
    /// What is known of one source file.
    struct SOURCE {
        LOGICAL_PATH const& logical;
        QString const& text;  ///< of the logical path
        PHYSICAL_PATH const& physical;
        QString working_directory;
        RULE texture_rule;
        RULE old_rule;
        /// The texture rule when it exists and says where to, else the old rule.
        RULE active_rule;
    };
    using CONVERSION = std::unique_ptr<ACTION_CONVERT>;

    void dispatch(FILE_MAP::ENTRY const& file);
    void dispatch_conversion(SOURCE const& source);
    void dispatch_atlas(SOURCE const& source);
    void dispatch_tga(SOURCE const& source);
    CONVERSION combine_flow(SOURCE const& source);
    CONVERSION combine_wear(SOURCE const& source);
    void export_alpha_blend_pair(SOURCE const& source);
    void take_over_faction_masks();

    void add_conversion(CONVERSION action, SOURCE const& source);
    /// The newer kind of action where a "Texture" rule exists, whichever rule is active, and else the older kind.
    template <typename NEWER, typename OLDER, typename... ARGUMENTS>
    void add_by_rule(SOURCE const& source, ARGUMENTS... arguments);
    void add_error(QString const& name, QString const& message, SOURCE const& source);
    void add_clash(QLatin1String what, SOURCE const& source);
    void add_billboard_error(QLatin1String message, SOURCE const& source);
    bool has_sibling(SOURCE const& source, int cut, QLatin1String ending) const;
    static PHYSICAL_PATH stem_of(SOURCE const& source, int cut);

    PROCESSOR_INTERFACE& processor_;
    FILE_MAP const& files_;
    RULE_CACHE const& rules_;
    std::vector<std::unique_ptr<ACTION_INTERFACE>> result_;

    /// The unescaped dot is deliberate; only names that end in ".tga" are ever held against it.
    QRegularExpression const numbered_mask_{QStringLiteral("(.*?)_mask[1-4].tga$")};
    /// Stems whose numbered masks already have their action.
    QSet<QString> mask_stems_;
    QSet<QString> gloss_stems_;
    /// Filled like the gloss stems, and read by nobody: kept as their mirror on purpose.
    QSet<QString> smoothness_stems_;
    /// Stem → conversion of its "_factionmask.tga". Borrowed from the result.
    QMultiHash<QString, ACTION_CONVERT*> faction_masks_;
    /// Target → the atlas that all its sources go into. Borrowed from the result.
    QHash<PHYSICAL_PATH, ACTION_ATLAS*> atlases_;
};
