// The actions that make one texture of one stem: what they are called, what they read, and what their textures hold.
#include "combine/action_billboard.hpp"
#include "combine/action_colour_mask.hpp"
#include "combine/action_curvature.hpp"
#include "combine/action_gloss_map.hpp"
#include "combine/action_levelled_gloss_map.hpp"
#include "combine/action_levelled_material_map.hpp"
#include "combine/action_mask.hpp"
#include "combine/action_material_map.hpp"
#include "tests/combine/action_fixture.hpp"

namespace {

constexpr int succeeded = 2;
constexpr int failed = 4;

class STEM_ACTIONS : public ACTION_FIXTURE {
protected:
    STEM_ACTIONS() { rules.add("", "Texture", {{"CompressionFormat", "rgba"}}); }

    /// One value in all three colours; alpha is never asked for.
    void write_grey(QString const& name, int grey, bool is_known = true) {
        write(name, flat({grey, grey, grey, 99}), is_known);
    }
    std::string four_cc() const {
        QFile file(target);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << target.toStdString();
        return file.readAll().mid(84, 4).toStdString();
    }
};

TEST_F(STEM_ACTIONS, names_targets_and_sources) {
    struct CASE {
        std::unique_ptr<ACTION_CONVERT> action;
        char const* name;
        char const* target;
        char const* sources;      ///< when the file table holds nothing
        char const* all_sources;  ///< when it holds all
    };
    auto const in_folder = stem("d/x.y");
    CASE cases[] = {
        {std::make_unique<ACTION_BILLBOARD>(in_folder, processor), "Convert billboard (x.y)",
         "x.y_normal_and_displacement.dds", "_normal _displacement", "_normal _displacement"},
        {std::make_unique<ACTION_CURVATURE>(in_folder, processor), "Convert curvature map (x.y)",
         "x.y_curvature_translucency.dds", "_curvature _translucency", "_curvature _translucency"},
        {std::make_unique<ACTION_GLOSS_MAP>(in_folder, processor), "Convert gloss map (x.y)", "x.y_gloss_map.dds",
         "_gloss", "_gloss _factionmask"},
        {std::make_unique<ACTION_MATERIAL_MAP>(in_folder, processor), "Convert material map (x.y)",
         "x.y_material_map.dds", "_smoothness", "_smoothness _metalness _factionmask"},
        {std::make_unique<ACTION_LEVELLED_GLOSS_MAP>(in_folder, processor), "Convert gloss map (x.y)",
         "x.y_gloss_map.dds", "_gloss", "_gloss _level _factionmask"},
        {std::make_unique<ACTION_LEVELLED_MATERIAL_MAP>(in_folder, processor), "Create material map (x.y)",
         "x.y_material_map.dds", "_smoothness", "_smoothness _metalness _factionmask"},
        {std::make_unique<ACTION_MASK>(in_folder, true, processor), "Convert mask texture (x.y)", "x.y_mask.dds",
         "_mask1", "_mask1 _mask2 _mask3 _mask4"},
        {std::make_unique<ACTION_MASK>(in_folder, false, processor), "Convert mask texture (x.y)",
         "x.y_colour_mask.dds", "_colormask", "_colormask _colormask2 _colormask3 _colormask3"},
        {std::make_unique<ACTION_COLOUR_MASK>(in_folder, true, processor), "Convert colormask (x.y)", "x.y_mask.dds",
         "_mask1", "_mask1 _mask2 _mask3 _mask4"},
        {std::make_unique<ACTION_COLOUR_MASK>(in_folder, false, processor), "Convert colormask (x.y)",
         "x.y_colour_mask.dds", "_colormask", "_colormask _colormask2 _colormask3 _colormask4"},
    };
    auto const paths = [](char const* suffixes) {
        QStringList texts;
        for (QString const& suffix : QString(suffixes).split(' '))
            texts.append("d/x.y" + suffix + ".tga");
        return texts.join(' ');
    };
    for (CASE const& c : cases) {
        EXPECT_EQ(c.action->get_name(true), c.name);
        EXPECT_EQ(c.action->get_name(false), QString(c.name).section(" (", 0, 0));
        EXPECT_EQ(c.action->get_target().text(), folder.path("out/d/") + c.target);
        EXPECT_EQ(sources_of(*c.action), paths(c.sources)) << c.name;
    }
    for (CASE const& c : cases) {
        for (QString const& path : paths(c.all_sources).split(' '))
            know(path, path);
    }
    know("d/x.y_colormask4.tga", "d/x.y_colormask4.tga");
    for (CASE const& c : cases)
        EXPECT_EQ(sources_of(*c.action), paths(c.all_sources)) << c.name;

    EXPECT_EQ(ACTION_MASK(stem("d/x[ab]"), true, processor).get_target().text(), folder.path("out/d/x_mask.dds"));
    EXPECT_EQ(ACTION_COLOUR_MASK(stem("x[ab]y"), false, processor).get_target().text(),
              folder.path("out/x[ab]y_colour_mask.dds"));
    EXPECT_EQ(ACTION_COLOUR_MASK(stem("x"), false, processor).progress_max(), 1000);
}

TEST_F(STEM_ACTIONS, billboards_take_fixed_settings) {
    // No rule says anything: always DXT5 with mip levels, by the compressor that is given none to choose.
    rules = TEST_RULES();
    write("x_normal.tga", flat({200, 120, 40, 99}, 8, 8));
    write_grey("x_displacement.tga", 70);
    for (int const alpha : {70, 255}) {
        ACTION_BILLBOARD action(stem("x"), processor);
        EXPECT_EQ(run(action), succeeded) << lines.toStdString();
        EXPECT_EQ(lines, "Done.");
        EXPECT_EQ(four_cc(), "DXT5");
        EXPECT_EQ(shown()[3], alpha);
        QFile::remove(folder.path("raw/x_displacement.tga"));
    }
    EXPECT_EQ(ACTION_BILLBOARD(stem("x.tga"), processor).get_target().text(),
              folder.path("out/x.tga_normal_and_displacement.dds"));
}

TEST_F(STEM_ACTIONS, three_source_maps) {
    write_grey("x_curvature.tga", 10);
    write_grey("x_translucency.tga", 20);
    write_grey("x_gloss.tga", 30);
    write_grey("x_smoothness.tga", 40);
    write_grey("x_metalness.tga", 50);
    ACTION_CURVATURE curvature(stem("x"), processor);
    EXPECT_EQ(run(curvature), succeeded);
    EXPECT_EQ(lines, "Done.");
    EXPECT_EQ(shown(), (std::array{10, 20, 0, 1}));
    EXPECT_EQ(curvature.registered_files().size(), 1);
    ACTION_GLOSS_MAP gloss(stem("x"), processor);
    EXPECT_EQ(run(gloss), succeeded);
    EXPECT_EQ(shown(), (std::array{30, 0, 0, 1}));
    ACTION_MATERIAL_MAP material(stem("x"), processor);
    EXPECT_EQ(run(material), succeeded);
    EXPECT_EQ(shown(), (std::array{40, 50, 0, 1}));
    // The disk decides whether there is a faction mask.
    write_grey("x_factionmask.tga", 60, false);
    EXPECT_EQ(run(gloss), succeeded);
    EXPECT_EQ(shown(), (std::array{30, 0, 60, 1}));
    EXPECT_EQ(run(material), succeeded);
    EXPECT_EQ(shown(), (std::array{40, 50, 60, 1}));
}

TEST_F(STEM_ACTIONS, the_stem_is_cut_from_the_entry_by_length) {
    know("x_gloss.tga", "y-GLOSS.TGA");
    write_grey("y_gloss.tga", 70, false);
    ACTION_GLOSS_MAP gloss(stem("x"), processor);
    EXPECT_EQ(run(gloss), succeeded);
    EXPECT_EQ(target, folder.path("out/x_gloss_map.dds"));
    EXPECT_EQ(shown()[0], 70);
}

TEST_F(STEM_ACTIONS, masks) {
    write_grey("x_mask1.tga", 10);
    ACTION_MASK mask(stem("x"), true, processor);
    EXPECT_EQ(run(mask), succeeded);
    EXPECT_EQ(shown(), (std::array{10, 0, 0, 1}));
    write_grey("x_mask2.tga", 20);
    write_grey("x_mask3.tga", 30);
    write_grey("x_mask4.tga", 40, false);  // the disk decides
    EXPECT_EQ(run(mask), succeeded);
    EXPECT_EQ(shown(), (std::array{10, 20, 30, 40}));
    write_grey("x_colormask4.tga", 50, false);
    ACTION_MASK colour(stem("x"), false, processor);
    EXPECT_EQ(run(colour), succeeded);
    EXPECT_EQ(shown(), (std::array{0, 0, 0, 50}));
}

TEST_F(STEM_ACTIONS, a_mask_takes_the_first_rule_that_can_be_read) {
    write_grey("x_mask3.tga", 30);
    rules = TEST_RULES()
                .add("_mask1.tga", "Texture", {{"Compressor", "steam"}})
                .add("_mask3.tga", "Texture", {{"CompressionFormat", "rgba"}});
    ACTION_MASK mask(stem("x"), true, processor);
    EXPECT_EQ(run(mask), succeeded);
    EXPECT_EQ(lines, "Unknown compressor type: steam|Failed to read Texture2 Rules !|Done.");
    EXPECT_EQ(shown(), (std::array{0, 0, 30, 1}));
    rules = TEST_RULES();
    EXPECT_EQ(run(mask), failed);
    EXPECT_TRUE(
        lines.endsWith(QString("Failed to read Texture2 Rules !|").repeated(4) + "Failed in gathering the rules"));
}

TEST_F(STEM_ACTIONS, colour_masks_of_the_old_rule) {
    write_grey("x_colormask.tga", 255);
    write_grey("x_colormask3.tga", 255);
    write_grey("x_colormask4.tga", 80, false);  // here the file table decides
    ACTION_COLOUR_MASK opaque(stem("x"), false, processor);
    EXPECT_EQ(run(opaque), succeeded);
    EXPECT_EQ(lines, "Done.");
    EXPECT_EQ(four_cc(), "DXT1");
    EXPECT_EQ(shown(), (std::array{255, 0, 255, 255}));
    know("x_colormask4.tga", "x_colormask4.tga");
    ACTION_COLOUR_MASK translucent(stem("x"), false, processor);
    EXPECT_EQ(run(translucent), succeeded);
    EXPECT_EQ(four_cc(), "DXT5");
    EXPECT_EQ(shown(), (std::array{255, 0, 255, 80}));
}

TEST_F(STEM_ACTIONS, levelled_maps) {
    write_grey("x_gloss.tga", 255);
    write_grey("x_level.tga", 255);
    write_grey("x_smoothness.tga", 255);
    ACTION_LEVELLED_GLOSS_MAP gloss(stem("x"), processor);
    EXPECT_EQ(run(gloss), succeeded);
    EXPECT_EQ(lines, "Done.");
    EXPECT_EQ(four_cc(), "DXT1");
    EXPECT_EQ(shown(), (std::array{255, 255, 0, 255}));
    ACTION_LEVELLED_MATERIAL_MAP material(stem("x"), processor);
    EXPECT_EQ(run(material), succeeded);
    EXPECT_EQ(four_cc(), "DXT1");
    write_grey("x_metalness.tga", 255, false);
    write_grey("x_factionmask.tga", 60, false);
    EXPECT_EQ(run(material), succeeded);
    EXPECT_EQ(four_cc(), "DXT5");
    EXPECT_EQ(shown(), (std::array{255, 255, 0, 60}));
    EXPECT_EQ(run(gloss), succeeded);
    EXPECT_NEAR(shown()[2], 60, 4);
}

TEST_F(STEM_ACTIONS, failures_are_said_in_order) {
    write("x_gloss.tga", flat({1, 2, 3, 4}, 8, 8));
    write("x_factionmask.tga", flat({1, 2, 3, 4}, 8, 4));
    write_grey("y_smoothness.tga", 1);
    write_grey("z_curvature.tga", 1);
    write_grey("z_translucency.tga", 1);
    rules = TEST_RULES();
    auto const combined = [](char const* why) {
        return QString(why) + "|Failed To Combine Files";
    };
    ACTION_GLOSS_MAP gloss(stem("x"), processor);
    EXPECT_EQ(run(gloss), failed);
    EXPECT_EQ(lines, combined("Mask image size invalid!"));
    ACTION_MATERIAL_MAP material(stem("y"), processor);
    EXPECT_EQ(run(material), failed);
    EXPECT_EQ(lines, combined("raw/y_metalness.tga Required but not found !"));
    ACTION_CURVATURE curvature(stem("z"), processor);
    EXPECT_EQ(run(curvature), failed);
    EXPECT_EQ(lines, "Failed to read Texture2 Rules !|Failed in gathering the rules");
    ACTION_BILLBOARD billboard(stem("w"), processor);
    EXPECT_EQ(run(billboard), failed);
    EXPECT_EQ(lines, combined(" No mask images found!"));
    rules.add("", "Texture", {{"CompressionFormat", "papyrus"}});
    ACTION_CURVATURE unknown(stem("z"), processor);
    EXPECT_EQ(run(unknown), failed);
    EXPECT_EQ(lines, "Compression Format Unrecognised!|Failed to convert!");
    ACTION_CURVATURE refused(stem("z"), processor);
    refused.set_error("no");
    EXPECT_EQ(run(refused), failed);
    EXPECT_EQ(lines, "no");
    EXPECT_FALSE(QDir(folder.path("out")).exists("z_curvature_translucency.dds"));
}

TEST_F(STEM_ACTIONS, library_failures_name_the_files) {
    write("x_gloss.tga", flat({1, 2, 3, 4}, 8, 8));
    write("x_level.tga", flat({1, 2, 3, 4}, 8, 4));
    write("y_gloss.tga", "no TGA");
    struct CASE {
        std::unique_ptr<ACTION_CONVERT> action;
        char const* line;
    };
    CASE const cases[] = {
        {std::make_unique<ACTION_LEVELLED_GLOSS_MAP>(stem("x"), processor),
         "The sources of 'out/x_gloss_map.dds' must have the same size: 'raw/x_gloss.tga' has 8 x 8, "
         "'raw/x_level.tga' has 8 x 4"},
        {std::make_unique<ACTION_LEVELLED_GLOSS_MAP>(stem("y"), processor),
         "Failed to read 'raw/y_gloss.tga': the file has 6 bytes, too few for a TGA header"},
        {std::make_unique<ACTION_LEVELLED_MATERIAL_MAP>(stem("z"), processor),
         "Required source 'raw/z_smoothness.tga' does not exist"},
        {std::make_unique<ACTION_COLOUR_MASK>(stem("z"), true, processor),
         "None of the sources of 'out/z_mask.dds' exists"},
    };
    for (CASE const& c : cases) {
        QString const earlier = c.action->get_target();
        folder.write(earlier.mid(folder.path().size() + 1), "earlier");
        EXPECT_EQ(run(*c.action), failed);
        EXPECT_EQ(lines, QString(c.line) + "|Failed to convert!");
        EXPECT_FALSE(QFile::exists(earlier)) << c.line;
    }
}

TEST_F(STEM_ACTIONS, an_earlier_target_that_is_not_touched_passes_for_success) {
    write("x_gloss.tga", flat({1, 2, 3, 4}, 6, 8));
    rules.add("", "Texture", {{"CompressionFormat", "dxt1"}});
    folder.write("out/x_gloss_map.dds", "earlier");
    ACTION_GLOSS_MAP gloss(stem("x"), processor);
    EXPECT_EQ(run(gloss), succeeded);
    EXPECT_EQ(lines, "Texture dimensions are invalid; Must be multiple of 4!!!|Done.");
}

TEST_F(STEM_ACTIONS, a_folder_in_the_place_of_a_target_does_not) {
    write_grey("x_gloss.tga", 1);
    write_grey("x_colormask.tga", 1);
    rules.add("", "Texture", {{"CompressionFormat", "dxt1"}});
    ACTION_GLOSS_MAP gloss(stem("x"), processor);
    ACTION_LEVELLED_GLOSS_MAP levelled(stem("x"), processor);
    ACTION_MASK mask(stem("x"), false, processor);
    ACTION_COLOUR_MASK colour_mask(stem("x"), false, processor);
    for (ACTION_CONVERT* const action :
         std::initializer_list<ACTION_CONVERT*>{&gloss, &levelled, &mask, &colour_mask}) {
        QDir().mkpath(action->get_target());
        EXPECT_EQ(run(*action), failed);
        EXPECT_TRUE(lines.endsWith("Failed to convert!")) << lines.toStdString();
    }
}

}  // namespace
