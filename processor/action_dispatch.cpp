#include "processor/action_dispatch.hpp"

#include "atlas/action_atlas.hpp"
#include "combine/action_billboard.hpp"
#include "combine/action_channel_combine.hpp"
#include "combine/action_colour_mask.hpp"
#include "combine/action_curvature.hpp"
#include "combine/action_gloss_map.hpp"
#include "combine/action_levelled_gloss_map.hpp"
#include "combine/action_levelled_material_map.hpp"
#include "combine/action_mask.hpp"
#include "combine/action_material_map.hpp"
#include "dds/action_dds.hpp"
#include "dds/action_dds_n.hpp"
#include "dds/action_freeimage.hpp"
#include "dds/whole_number.hpp"
#include "fga/action_fga.hpp"
#include "processor/action_texture_array.hpp"
#include "processor/apply_target_rule.hpp"
#include "processor/host/action_error.hpp"
#include "processor/host/paths.hpp"
#include "processor/suffixed_working_path.hpp"

#include <algorithm>
#include <array>

namespace {

bool ends_with(QString const& text, char const* suffix) {
    return text.endsWith(QLatin1String(suffix));
}

bool is_image(QString const& path) {
    constexpr std::array extensions = {".tga", ".tif", ".png", ".dds", ".fga"};
    return std::any_of(extensions.begin(), extensions.end(),
                       [&](char const* extension) { return ends_with(path, extension); });
}

QString file_name(PHYSICAL_PATH const& path) {
    return path.section(QLatin1Char('/'), -1);
}

}  // namespace

ACTION_DISPATCH::ACTION_DISPATCH(PROCESSOR_INTERFACE& processor, FILE_MAP const& files, RULE_CACHE const& rules)
    : processor_(processor),
      files_(files),
      rules_(rules) {
}

QVector<ACTION_INTERFACE*> ACTION_DISPATCH::create_actions() {
    for (FILE_MAP::ENTRY const& file : files_)
        dispatch(file);
    take_over_faction_masks();
    QVector<ACTION_INTERFACE*> actions;
    actions.reserve(static_cast<int>(result_.size()));
    for (auto& action : result_)
        actions.append(action.release());
    return actions;
}

void ACTION_DISPATCH::dispatch(FILE_MAP::ENTRY const& file) {
    QString const& text = file.key;
    if (file.value == nullptr)
        return;
    PHYSICAL_PATH const& physical = file.value->physical_path;
    // A list of texture names is no image: neither conversions nor atlases concern it.
    if (ends_with(text, ".texture_array"))
        result_.push_back(std::make_unique<ACTION_TEXTURE_ARRAY>(physical, processor_));
    if (!is_image(text))
        return;
    SOURCE source{file.key,
                  text,
                  physical,
                  PATHS::target_working_data(physical),
                  rules_.get(file.key, QStringLiteral("Texture")),
                  rules_.get(file.key, QStringLiteral("TextureOld")),
                  {}};
    bool const texture_rule_says_where = source.texture_rule.value(QStringLiteral("TargetPath")).isValid();
    source.active_rule = texture_rule_says_where ? source.texture_rule : source.old_rule;
    if (source.active_rule.exists())
        dispatch_conversion(source);
    dispatch_atlas(source);
}

void ACTION_DISPATCH::dispatch_conversion(SOURCE const& source) {
    QString const& text = source.text;
    QString const format = source.active_rule.value(QStringLiteral("Format")).toString().toLower();
    bool const has_texture_rule = source.texture_rule.exists();

    if (ends_with(text, "_flow.tif"))
        return add_conversion(combine_flow(source), source);
    if (ends_with(text, "_wear.tif"))
        return add_conversion(combine_wear(source), source);
    if (ends_with(text, "_deposition.tif"))
        return;
    if (!format.isEmpty() && format != QLatin1String("dds"))
        return add_conversion(std::make_unique<ACTION_FREEIMAGE>(source.physical, format, processor_), source);

    // Packed maps are made from their primary source; the other sources of the stem make nothing of their own.
    if (ends_with(text, "_curvature.tga"))
        return add_conversion(std::make_unique<ACTION_CURVATURE>(stem_of(source, 14), processor_), source);
    if (ends_with(text, "_translucency.tga")) {
        if (ends_with(text, "_curvature_translucency.tga"))
            add_clash(QLatin1String("curvature_translucency map"), source);
        return;
    }
    if (ends_with(text, "_gloss.tga") && !ends_with(text, "_spec_gloss.tga")) {
        gloss_stems_.insert(text.left(text.size() - 10));
        return add_by_rule<ACTION_GLOSS_MAP, ACTION_LEVELLED_GLOSS_MAP>(source, stem_of(source, 10));
    }
    if (ends_with(text, "_smoothness.tga")) {
        smoothness_stems_.insert(text.left(text.size() - 15));
        return add_by_rule<ACTION_MATERIAL_MAP, ACTION_LEVELLED_MATERIAL_MAP>(source, stem_of(source, 15));
    }
    if (ends_with(text, "_gloss_map.tga") && has_sibling(source, 8, QLatin1String(".tga")))
        return add_clash(QLatin1String("gloss map"), source);
    if (ends_with(text, "_material_map.tga") && has_sibling(source, 16, QLatin1String("smoothness.tga")))
        return add_clash(QLatin1String("material map"), source);
    if (ends_with(text, "_colormask.tga"))
        return add_by_rule<ACTION_MASK, ACTION_COLOUR_MASK>(source, stem_of(source, 14), false);
    if (ends_with(text, "_billboard_normal.tga")) {
        if (!has_sibling(source, 10, QLatin1String("displacement.tga")))
            return add_billboard_error(QLatin1String("Displacement map not found!"), source);
        return add_conversion(std::make_unique<ACTION_BILLBOARD>(stem_of(source, 11), processor_), source);
    }
    if (ends_with(text, "_billboard_displacement.tga")) {
        if (!has_sibling(source, 16, QLatin1String("normal.tga")))
            add_billboard_error(QLatin1String("Normal map not found!"), source);
        return;
    }

    if (ends_with(text, ".fga"))
        return add_conversion(std::make_unique<ACTION_FGA>(source.physical, processor_), source);
    // A plain ".tif" has no conversion to DDS.
    if (!ends_with(text, ".tga") && !ends_with(text, ".dds") && !ends_with(text, ".png"))
        return;
    if (source.active_rule.value(QStringLiteral("ExportExtraAlphaBlendTexture")).toBool() && has_texture_rule)
        return export_alpha_blend_pair(source);
    if (ends_with(text, ".tga"))
        return dispatch_tga(source);
    if (has_texture_rule)
        add_conversion(std::make_unique<ACTION_DDS_N>(source.physical, processor_), source);
}

void ACTION_DISPATCH::dispatch_tga(SOURCE const& source) {
    QRegularExpressionMatch const mask = numbered_mask_.match(source.text);
    if (mask.hasMatch()) {
        // One action for all the masks of a stem, made by whichever comes first.
        if (!mask_stems_.contains(mask.captured(1))) {
            mask_stems_.insert(mask.captured(1));
            add_by_rule<ACTION_MASK, ACTION_COLOUR_MASK>(source, stem_of(source, 10), true);
        }
        return;
    }
    CONVERSION action;
    if (source.texture_rule.exists()) {
        action = std::make_unique<ACTION_DDS_N>(source.physical, processor_);
    } else {
        QString const forbid = source.old_rule.value(QStringLiteral("ForbidDXT1")).toString().toLower();
        bool const forbid_dxt1 = forbid == QLatin1String("true") || forbid == QLatin1String("1");
        action = std::make_unique<ACTION_DDS>(source.physical, processor_, forbid_dxt1);
    }
    if (ends_with(source.text, "_factionmask.tga"))
        faction_masks_.insert(source.text.left(source.text.size() - 16), action.get());
    add_conversion(std::move(action), source);
}

/// A flow map is grey: all three colours come from it.
ACTION_DISPATCH::CONVERSION ACTION_DISPATCH::combine_flow(SOURCE const& source) {
    auto action = std::make_unique<ACTION_CHANNEL_COMBINE>(
        PHYSICAL_PATH(source.working_directory + QLatin1String("/blendmap_alpha.jpg")), processor_);
    for (std::size_t channel = 0; channel < 3; ++channel)
        action->set_channel_source(channel, source.logical);
    return action;
}

/// Deposition in red and wear in green; nothing without the deposition map.
ACTION_DISPATCH::CONVERSION ACTION_DISPATCH::combine_wear(SOURCE const& source) {
    LOGICAL_PATH const deposition(source.text.left(source.text.size() - 8) + QLatin1String("deposition.tif"));
    if (!files_.contains(deposition))
        return nullptr;
    auto action = std::make_unique<ACTION_CHANNEL_COMBINE>(
        PHYSICAL_PATH(source.working_directory + QLatin1String("/blendmap.jpg")), processor_);
    action->set_channel_source(0, deposition);
    action->set_channel_source(1, source.logical);
    return action;
}

void ACTION_DISPATCH::export_alpha_blend_pair(SOURCE const& source) {
    auto const text_of = [&](char const* property) {
        return source.active_rule.value(QLatin1String(property)).toString();
    };
    PHYSICAL_PATH const target(suffixed_working_path(source.physical, QStringLiteral("_ab")));
    auto plain = std::make_unique<ACTION_DDS_N>(source.physical, processor_);
    auto alpha_blend = std::make_unique<ACTION_DDS_N>(
        source.physical, processor_, target, text_of("ExtraAlphaBlendTextureCompressor"),
        text_of("ExtraAlphaBlendCompressionFormat"), text_of("ExtraAlphaBlendPremultipliedAlpha"));
    add_conversion(std::move(plain), source);
    add_conversion(std::move(alpha_blend), source);
}

void ACTION_DISPATCH::dispatch_atlas(SOURCE const& source) {
    RULE_TOPIC const topic("atlas");
    RULE const rule = rules_.get(source.logical, QStringLiteral("Atlas"));
    if (!rule.exists())
        return;
    std::int32_t const width = whole_number(rule.value(QStringLiteral("Width")));
    std::int32_t const height = whole_number(rule.value(QStringLiteral("Height")));
    if (rule.value(QStringLiteral("TargetBaseName")).isNull() || width <= 0 || height <= 0)
        return add_error(QStringLiteral("Create atlas"),
                         QStringLiteral("No target base name or width or height has been specified in the rule!"),
                         source);
    QString target = source.working_directory + QLatin1Char('/') +
                     PATHS::relative_target_path_from_rule_path(rule, QStringLiteral("TargetBaseName"), source.logical,
                                                                source.physical);
    while (target.endsWith(QLatin1Char('/')))
        target.chop(1);
    ACTION_ATLAS*& atlas = atlases_[PHYSICAL_PATH(target)];
    if (atlas == nullptr) {
        auto action = std::make_unique<ACTION_ATLAS>(PHYSICAL_PATH(target), width, height, processor_);
        atlas = action.get();
        result_.push_back(std::move(action));
    }
    atlas->add_source(source.logical);
}

/// A gloss map takes the faction mask of its stem in, so that mask gets no texture of its own.
void ACTION_DISPATCH::take_over_faction_masks() {
    QSet<ACTION_INTERFACE*> taken;
    for (QString const& stem : qAsConst(gloss_stems_)) {
        for (ACTION_CONVERT* const action : faction_masks_.values(stem))
            taken.insert(action);
    }
    if (!taken.isEmpty())
        std::erase_if(result_, [&](auto const& action) { return taken.contains(action.get()); });
}

void ACTION_DISPATCH::add_conversion(CONVERSION action, SOURCE const& source) {
    apply_target_rule(std::move(action), source.active_rule, result_, source.working_directory, source.logical,
                      source.physical);
}

template <typename NEWER, typename OLDER, typename... ARGUMENTS>
void ACTION_DISPATCH::add_by_rule(SOURCE const& source, ARGUMENTS... arguments) {
    CONVERSION action;
    if (source.texture_rule.exists())
        action = std::make_unique<NEWER>(arguments..., processor_);
    else
        action = std::make_unique<OLDER>(arguments..., processor_);
    add_conversion(std::move(action), source);
}

void ACTION_DISPATCH::add_error(QString const& name, QString const& message, SOURCE const& source) {
    auto action = std::make_unique<ACTION_ERROR>(name, message, processor_);
    action->add_source_file(source.logical);
    result_.push_back(std::move(action));
}

void ACTION_DISPATCH::add_clash(QLatin1String what, SOURCE const& source) {
    add_error(QStringLiteral("Convert texture (%1)").arg(file_name(source.physical)),
              QStringLiteral("This action is clashing with the %1 generation of the same texture. You probably don't "
                             "need this file as a raw data.")
                  .arg(what),
              source);
}

void ACTION_DISPATCH::add_billboard_error(QLatin1String message, SOURCE const& source) {
    add_error(QStringLiteral("Convert billboard (%1)").arg(file_name(source.physical)), message, source);
}

/// Whether the table holds the source's logical path with its last `cut` characters replaced by `ending`.
bool ACTION_DISPATCH::has_sibling(SOURCE const& source, int cut, QLatin1String ending) const {
    return files_.contains(LOGICAL_PATH(source.text.left(source.text.size() - cut) + ending));
}

/// The physical path without its last `cut` characters.
PHYSICAL_PATH ACTION_DISPATCH::stem_of(SOURCE const& source, int cut) {
    return PHYSICAL_PATH(source.physical.left(source.physical.text().size() - cut));
}
