// Which actions a file table gets. Every action is written as one text, "name -> target", with " < sources" where the
// name does not say the one source, so that a whole pass compares as a list; errors are written "name ! message".
#include "atlas/action_atlas.hpp"
#include "combine/action_channel_combine.hpp"
#include "combine/action_gloss_map.hpp"
#include "dds/action_dds_n.hpp"
#include "processor/action_dispatch.hpp"
#include "processor/host/paths.hpp"
#include "processor/suffixed_working_path.hpp"
#include "processor/texture_processor.hpp"
#include "tests/host/framework/test_folder.hpp"
#include "tests/support/test_rules.hpp"
#include "tests/support/test_tga.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace {

constexpr char const* clash = "generation of the same texture. You probably don't need this file as a raw data.";

/// " < a b" for actions of several sources, or of one whose name the action does not bear.
QString packed_from(QVector<LOGICAL_PATH> const& sources, QString const& name) {
    QString text;
    for (LOGICAL_PATH const& source : sources)
        text += ' ' + source.text().mid(6);
    return sources.size() == 1 && name.contains('(' + text.mid(1) + ')') ? QString() : " <" + text;
}

/// The actions for these logical paths below "<raw>/", in their order.
QStringList dispatched(QStringList const& names, RULE_CACHE const& rules) {
    PATHS::set_roots(PHYSICAL_PATH(QStringLiteral("/raw")), PHYSICAL_PATH(QStringLiteral("/out")));
    std::vector<std::unique_ptr<FILE_ENTRY>> entries;
    FILE_MAP files;
    for (QString const& name : names) {
        entries.push_back(std::make_unique<FILE_ENTRY>(FILE_ENTRY{PHYSICAL_PATH("/raw/" + name), {}}));
        files.insert(LOGICAL_PATH("<raw>/" + name), entries.back().get());
    }
    TEXTURE_PROCESSOR processor;
    QStringList texts;
    for (ACTION_INTERFACE* const made : processor.create_actions(files, rules)) {
        std::unique_ptr<ACTION_INTERFACE> const action(made);
        QVector<LOGICAL_PATH> sources;
        QVector<ACTION_INTERFACE::TARGET_FILE> targets;
        QDateTime newest;
        action->get_affected_files(sources, targets, newest, files, rules);
        EXPECT_FALSE(sources.isEmpty());
        texts.append(action->get_name(true));
        if (!action->error().isEmpty())
            texts.back() += " ! " + action->error();
        else
            texts.back() += " -> " + targets.value(0).physical_path.text() + packed_from(sources, texts.back());
    }
    return texts;
}

QStringList list(std::initializer_list<QString> texts) {
    return texts;
}

TEST(action_dispatch, suffixes_and_siblings) {
    TEST_RULES rules;
    rules.add("", "Texture", {{"TargetPath", "t/{dir}"}});
    struct CASE {
        char const* what;
        QStringList files;
        QStringList expected;
    };
    CASE const cases[] = {
        {"plain images", list({"a.tga", "b.png", "d/c.v2.dds"}),
         list({"Convert texture (a.tga) -> /out/t/a.dds", "Convert texture (b.png) -> /out/t/b.dds",
               "Convert texture (d/c.v2.dds) -> /out/t/d/c.v2.dds"})},
        {"no image, plain tif, upper case", list({"a.txt", "a.tif", "a.TGA", "a.jpg"}), {}},
        {"vector fields and texture lists", list({"a.texture_array", "w.v2.fga"}),
         list({"Asset Graph (a.texture_array) -> /raw/a.texture_array.agf",
               "Convert FGA (w.v2.fga) -> /out/t/w.v2.dds"})},
        {"blend maps", list({"a/x_flow.tif", "b/x_deposition.tif", "b/x_wear.tif", "y_wear.tif", "z_deposition.tif"}),
         list({"Convert texture (/out/t/a/blendmap_alpha.jpg) -> /out/t/a/blendmap_alpha.jpg < a/x_flow.tif "
               "a/x_flow.tif a/x_flow.tif",
               "Convert texture (/out/t/b/blendmap.jpg) -> /out/t/b/blendmap.jpg < b/x_deposition.tif b/x_wear.tif"})},
        {"a gloss source with underscore words", list({"x_spec_gloss.tga"}),
         list({"Convert texture (x_spec_gloss.tga) -> /out/t/x_spec_gloss.dds"})},
        {"gloss map clashes", list({"d/x_gloss.tga", "d/x_gloss_map.tga"}),
         list({"Convert gloss map (x) -> /out/t/d/x_gloss_map.dds < d/x_gloss.tga",
               QString("Convert texture (x_gloss_map.tga) ! This action is clashing with the gloss map ") + clash})},
        {"gloss map without gloss", list({"x_gloss_map.tga"}),
         list({"Convert texture (x_gloss_map.tga) -> /out/t/x_gloss_map.dds"})},
        {"material map clashes", list({"x_material_map.tga", "x_smoothness.tga"}),
         list({QString("Convert texture (x_material_map.tga) ! This action is clashing with the material map ") + clash,
               "Convert material map (x) -> /out/t/x_material_map.dds < x_smoothness.tga"})},
        {"curvature clash needs no sibling", list({"x_curvature_translucency.tga", "x_translucency.tga"}),
         list({QString("Convert texture (x_curvature_translucency.tga) ! This action is clashing with the "
                       "curvature_translucency map ") +
               clash})},
        {"billboard halves", list({"a_billboard_normal.tga", "b_billboard_displacement.tga"}),
         list({"Convert billboard (a_billboard_normal.tga) ! Displacement map not found!",
               "Convert billboard (b_billboard_displacement.tga) ! Normal map not found!"})},
        {"a whole billboard", list({"a_billboard_displacement.tga", "a_billboard_normal.tga"}),
         list({"Convert billboard (a_billboard) -> /out/t/a_billboard_normal_and_displacement.dds < "
               "a_billboard_normal.tga a_billboard_displacement.tga"})},
        {"curvature", list({"x_curvature.tga", "x_translucency.tga"}),
         list({"Convert curvature map (x) -> /out/t/x_curvature_translucency.dds < x_curvature.tga "
               "x_translucency.tga"})},
        {"faction mask taken by gloss", list({"x_factionmask.tga", "x_gloss.tga", "y_factionmask.tga"}),
         list({"Convert gloss map (x) -> /out/t/x_gloss_map.dds < x_gloss.tga x_factionmask.tga",
               "Convert texture (y_factionmask.tga) -> /out/t/y_factionmask.dds"})},
        {"a material map leaves the faction mask its texture",
         list({"x_factionmask.tga", "x_metalness.tga", "x_smoothness.tga"}),
         list({"Convert texture (x_factionmask.tga) -> /out/t/x_factionmask.dds",
               "Convert texture (x_metalness.tga) -> /out/t/x_metalness.dds",
               "Convert material map (x) -> /out/t/x_material_map.dds < x_smoothness.tga x_metalness.tga "
               "x_factionmask.tga"})},
        {"one action for the masks of a stem", list({"a_mask3.tga", "a_mask1.tga", "b_mask4.tga", "a_mask5.tga"}),
         list({"Convert mask texture (a) -> /out/t/a_mask.dds < a_mask1.tga a_mask3.tga",
               "Convert mask texture (b) -> /out/t/b_mask.dds < b_mask1.tga b_mask4.tga",
               "Convert texture (a_mask5.tga) -> /out/t/a_mask5.dds"})},
        {"colour masks", list({"a_colormask.tga", "a_colormask3.tga"}),
         list({"Convert mask texture (a) -> /out/t/a_colour_mask.dds < a_colormask.tga a_colormask3.tga "
               "a_colormask3.tga",
               "Convert texture (a_colormask3.tga) -> /out/t/a_colormask3.dds"})},
    };
    for (CASE const& c : cases)
        EXPECT_EQ(dispatched(c.files, rules), c.expected) << c.what;
}

TEST(action_dispatch, which_rule_is_active) {
    QStringList const converted = list({"Convert texture (d/a.tga) -> /out/t/a.dds"});
    QStringList const no_target = list({"Convert texture (d/a.tga) ! No target path has been specified in the rule!"});
    struct CASE {
        char const* what;
        TEST_RULES rules;
        QStringList expected;
    };
    CASE const cases[] = {
        {"no rule", {}, {}},
        {"texture rule", TEST_RULES().add("", "Texture", {{"TargetPath", "t"}}), converted},
        {"an empty target path is a path", TEST_RULES().add("", "Texture", {{"TargetPath", ""}}),
         list({"Convert texture (d/a.tga) -> /out/a.dds"})},
        {"base name", TEST_RULES().add("", "Texture", {{"TargetPath", "t"}, {"TargetBaseName", "n.1"}}),
         list({"Convert texture (d/a.tga) -> /out/t/n.1.dds"})},
        {"texture rule without target, no old rule", TEST_RULES().add("", "Texture", {{"Mipmaps", true}}), {}},
        {"texture rule without target, old rule says where",
         TEST_RULES().add("", "Texture", {}).add("", "TextureOld", {{"TargetPath", "t"}}), converted},
        {"nobody says where", TEST_RULES().add("", "Texture", {}).add("", "TextureOld", {{"ForbidDXT1", 1}}),
         no_target},
        {"place holders, with slashes to spare", TEST_RULES().add("", "Texture", {{"TargetPath", "/x//{dir}/{name}/"}}),
         list({"Convert texture (d/a.tga) -> /out/x/d/a/a.dds"})},
        {"a base name with folders",
         TEST_RULES().add("", "Texture", {{"TargetPath", "."}, {"TargetBaseName", "t//x/../n"}}),
         list({"Convert texture (d/a.tga) -> /out/t/n.dds"})},
        {"another format", TEST_RULES().add("", "Texture", {{"TargetPath", "t"}, {"Format", "PNG"}}),
         list({"Convert texture (d/a.tga) -> /out/t/a.png"})},
        {"another format by the old rule", TEST_RULES().add("", "TextureOld", {{"TargetPath", "t"}, {"Format", "jpg"}}),
         list({"Convert texture (d/a.tga) -> /out/t/a.jpg"})},
        {"the old rule alone", TEST_RULES().add("", "TextureOld", {{"TargetPath", "t"}}), converted},
        {"DDS in capitals", TEST_RULES().add("", "Texture", {{"TargetPath", "t"}, {"Format", "DDS"}}), converted},
        {"alpha-blend pair",
         TEST_RULES().add("", "Texture", {{"TargetPath", "t"}, {"ExportExtraAlphaBlendTexture", true}}),
         list({"Convert texture (d/a.tga) -> /out/t/a.dds", "Convert texture (d/a.tga) -> /out/t/a_ab.dds"})},
        {"the flag of the old rule, when that is active",
         TEST_RULES()
             .add("", "Texture", {})
             .add("", "TextureOld", {{"TargetPath", "t"}, {"ExportExtraAlphaBlendTexture", "1"}}),
         list({"Convert texture (d/a.tga) -> /out/t/a.dds", "Convert texture (d/a.tga) -> /out/t/a_ab.dds"})},
        {"atlas without size", TEST_RULES().add("", "Atlas", {{"TargetBaseName", "p"}, {"Width", "0"}, {"Height", 64}}),
         list({"Create atlas ! No target base name or width or height has been specified in the rule!"})},
        {"atlas of more than 32 bits",
         TEST_RULES().add("", "Atlas", {{"TargetBaseName", "p"}, {"Width", 4294967360LL}, {"Height", 1e300}}),
         list({"Create atlas ! No target base name or width or height has been specified in the rule!"})},
        {"atlas error follows the conversion",
         TEST_RULES().add("", "Texture", {{"TargetPath", "t"}}).add("", "Atlas", {{"Width", 64}, {"Height", 64}}),
         converted + list({"Create atlas ! No target base name or width or height has been specified in the rule!"})},
    };
    for (CASE const& c : cases)
        EXPECT_EQ(dispatched(list({"d/a.tga"}), c.rules), c.expected) << c.what;
}

TEST(action_dispatch, rows_that_come_before_others) {
    QString const atlas = "Create atlas ! No target base name or width or height has been specified in the rule!";
    TEST_RULES const with_pair =
        TEST_RULES().add("", "Texture", {{"TargetPath", "t"}, {"ExportExtraAlphaBlendTexture", true}});
    EXPECT_EQ(dispatched(list({"x_mask1.tga"}), with_pair),
              list({"Convert texture (x_mask1.tga) -> /out/t/x_mask1.dds",
                    "Convert texture (x_mask1.tga) -> /out/t/x_mask1_ab.dds"}));
    TEST_RULES const only_old = TEST_RULES().add("", "TextureOld", {{"TargetPath", "t"}});
    EXPECT_EQ(dispatched(list({"a.dds", "a.png"}), only_old), QStringList());
    // The atlas step looks at every image, converted or not, and at nothing else.
    TEST_RULES atlas_too = TEST_RULES().add("", "Texture", {{"TargetPath", "t"}}).add("", "Atlas", {});
    EXPECT_EQ(dispatched(list({"a.tif", "a.texture_array", "a.txt"}), atlas_too),
              list({atlas, "Asset Graph (a.texture_array) -> /raw/a.texture_array.agf"}));
    EXPECT_EQ(dispatched(list({"a_billboard_normal.tga"}), atlas_too),
              list({"Convert billboard (a_billboard_normal.tga) ! Displacement map not found!", atlas}));
}

TEST(action_dispatch, atlases_gather_what_has_their_target) {
    TEST_RULES rules;
    rules.add("", "Atlas", {{"TargetBaseName", "../out//ui/{dir}//"}, {"Width", "64"}, {"Height", 64}})
        .add("b.png", "Texture", {{"TargetPath", "t"}})
        .add("c.tif", "Atlas", {{"TargetBaseName", "ui/d"}, {"Width", 128}, {"Height", 128}})
        .add("e.tga", "Atlas", {{"TargetBaseName", "//"}, {"Width", 8}, {"Height", 8}})
        .add("f.fga", "Atlas", {{"TargetBaseName", "ui/d"}, {"Width", 8}, {"Height", -8}});
    EXPECT_EQ(
        dispatched(list({"d/a.tga", "d/b.png", "d/c.tif", "d/x/a.dds", "e.tga", "f.fga", "g.jpg"}), rules),
        list({"Create atlas -> /out/ui/d.tai < d/a.tga d/b.png d/c.tif", "Convert texture (d/b.png) -> /out/t/b.dds",
              "Create atlas -> /out/ui/d/x.tai < d/x/a.dds", "Create atlas -> /out.tai < e.tga",
              "Create atlas ! No target base name or width or height has been specified in the rule!"}));
}

TEST(action_dispatch, rules_pick_the_class_of_packed_maps) {
    QStringList const files =
        list({"a_mask2.tga", "b_colormask.tga", "c_colormask4.tga", "d_gloss.tga", "d_level.tga", "e_smoothness.tga"});
    TEST_RULES old_rule;
    old_rule.add("", "TextureOld", {{"TargetPath", "t"}});
    QStringList const older = list({
        "Convert colormask (a) -> /out/t/a_mask.dds < a_mask1.tga a_mask2.tga",
        "Convert colormask (b) -> /out/t/b_colour_mask.dds < b_colormask.tga",
        "Convert texture (c_colormask4.tga) -> /out/t/c_colormask4.dds",
        "Convert gloss map (d) -> /out/t/d_gloss_map.dds < d_gloss.tga d_level.tga",
        "Convert texture (d_level.tga) -> /out/t/d_level.dds",
        "Create material map (e) -> /out/t/e_material_map.dds < e_smoothness.tga",
    });
    EXPECT_EQ(dispatched(files, old_rule), older);
    EXPECT_EQ(dispatched(list({"x_factionmask.tga", "x_gloss.tga"}), old_rule),
              list({"Convert gloss map (x) -> /out/t/x_gloss_map.dds < x_gloss.tga x_factionmask.tga"}));
    // A texture rule that does not say where still picks the newer classes.
    QStringList const newer = list({
        "Convert mask texture (a) -> /out/t/a_mask.dds < a_mask1.tga a_mask2.tga",
        "Convert mask texture (b) -> /out/t/b_colour_mask.dds < b_colormask.tga",
        "Convert texture (c_colormask4.tga) -> /out/t/c_colormask4.dds",
        "Convert gloss map (d) -> /out/t/d_gloss_map.dds < d_gloss.tga",
        "Convert texture (d_level.tga) -> /out/t/d_level.dds",
        "Convert material map (e) -> /out/t/e_material_map.dds < e_smoothness.tga",
    });
    EXPECT_EQ(dispatched(files, old_rule.add("", "Texture", {{"Mipmaps", false}})), newer);
    // Blend maps come before the format is looked at, packed maps after.
    TEST_RULES png;
    png.add("", "Texture", {{"TargetPath", "t"}, {"Format", "png"}});
    EXPECT_EQ(
        dispatched(list({"x_curvature.tga", "x_flow.tif", "x_gloss.tga", "x_mask1.tga", "x_n.tif"}), png),
        list({"Convert texture (x_curvature.tga) -> /out/t/x_curvature.png",
              "Convert texture (/out/t/blendmap_alpha.jpg) -> /out/t/blendmap_alpha.jpg < x_flow.tif x_flow.tif "
              "x_flow.tif",
              "Convert texture (x_gloss.tga) -> /out/t/x_gloss.png",
              "Convert texture (x_mask1.tga) -> /out/t/x_mask1.png", "Convert texture (x_n.tif) -> /out/t/x_n.png"}));
}

/// The old rule's word on DXT1 shows in the texture: an opaque source stays DXT5 where it is forbidden.
TEST(action_dispatch, the_old_rule_may_forbid_dxt1) {
    struct CASE {
        QVariant forbid;
        char const* four_cc;
    };
    CASE const cases[] = {{{}, "DXT1"},     {"false", "DXT1"}, {"yes", "DXT1"}, {0, "DXT1"},
                          {"TRUE", "DXT5"}, {true, "DXT5"},    {1, "DXT5"},     {"1", "DXT5"}};
    TEST_FOLDER const folder;
    PHYSICAL_PATH const source(folder.write("raw/a.tga", tga(4, 4, [](int, int) { return std::array{1, 2, 3, 255}; })));
    PATHS::set_roots(PHYSICAL_PATH(folder.path("raw")), PHYSICAL_PATH(folder.path("out")));
    FILE_ENTRY entry{source, {}};
    FILE_MAP files;
    files.insert(LOGICAL_PATH(QStringLiteral("<raw>/a.tga")), &entry);
    for (CASE const& c : cases) {
        TEST_RULES rules;
        rules.add("", "TextureOld", {{"TargetPath", "t"}, {"ForbidDXT1", c.forbid}});
        TEXTURE_PROCESSOR processor;
        auto const actions = processor.create_actions(files, rules);
        ASSERT_EQ(actions.size(), 1);
        std::unique_ptr<ACTION_INTERFACE> const action(actions.front());
        ASSERT_EQ(action->run(files, rules), ACTION_INTERFACE::STATUS_SUCCEEDED);
        QFile target(folder.path("out/t/a.dds"));
        ASSERT_TRUE(target.open(QIODevice::ReadOnly));
        EXPECT_EQ(target.readAll().mid(84, 4), c.four_cc) << c.forbid.toString().toStdString();
    }
}

#if defined(__GXX_ABI_VERSION) && defined(__x86_64__)
/// The slot that the next virtual operation would take. The destructor takes two here.
template <typename ACTION>
std::size_t next_slot() {
    struct PROBE : ACTION {
        using ACTION::ACTION;
        virtual void next() {}
    };
    auto const operation = &PROBE::next;
    std::size_t value = 0;
    std::memcpy(&value, &operation, sizeof value);
    return (value - 1) / sizeof(void*) - 1;
}

TEST(action_dispatch, actions_add_nothing_to_the_table_of_the_contract) {
    std::size_t const next[] = {next_slot<ACTION_CONVERT>(), next_slot<ACTION_DDS_N>(), next_slot<ACTION_GLOSS_MAP>(),
                                next_slot<ACTION_CHANNEL_COMBINE>(), next_slot<ACTION_ATLAS>()};
    for (std::size_t const slot : next)
        EXPECT_EQ(slot, 15u);
}
#endif

TEST(suffixed_working_path, keeps_place_and_extension) {
    PATHS::set_roots(PHYSICAL_PATH(QStringLiteral("/raw")), PHYSICAL_PATH(QStringLiteral("/out")));
    EXPECT_EQ(suffixed_working_path(PHYSICAL_PATH(QStringLiteral("/raw/d/a.b.tga")), "_ab"), "/out/d/a.b_ab.tga");
    EXPECT_EQ(suffixed_working_path(PHYSICAL_PATH(QStringLiteral("/out/a.dds")), "_ab"), "/out/a_ab.dds");
}

}  // namespace
