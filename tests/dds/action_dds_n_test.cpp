// The whole road of one texture through the action, with real files and the real compressor.
#include "dds/action_dds_n.hpp"
#include "platform/dds_container/dds_container.hpp"
#include "platform/image_loader/picture.hpp"
#include "processor/host/paths.hpp"
#include "tests/host/framework/test_folder.hpp"
#include "tests/support/full_disk.hpp"
#include "tests/support/no_processor.hpp"
#include "tests/support/test_rules.hpp"
#include "tests/support/test_tga.hpp"

#include <gtest/gtest.h>

#include <set>

namespace {

QByteArray plain_tga(int width, int height) {
    return tga(width, height, [](int x, int y) { return std::array{x * 8, y * 8, 200, 255}; });
}

QByteArray png(int width, int height) {
    TEST_FOLDER const folder;
    IMAGE_LOADER::PICTURE picture;
    picture.width = static_cast<std::uint32_t>(width);
    picture.height = static_cast<std::uint32_t>(height);
    for (int i = 0; i < width * height; ++i)
        picture.rgba.insert(picture.rgba.end(), {250, 20, 10, 255});
    std::string cause;
    EXPECT_TRUE(IMAGE_LOADER::write_png(folder.path("p.png").toStdString(), picture, cause)) << cause;
    QFile file(folder.path("p.png"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

class ACTION_DDS_N_RUN : public testing::Test {
protected:
    ACTION_DDS_N_RUN() {
        QDir().mkpath(folder.path("raw"));
        PATHS::set_roots(PHYSICAL_PATH(folder.path("raw")), PHYSICAL_PATH(folder.path("out")));
    }

    int run(ACTION_DDS_N& action, TEST_RULES const& rules) {
        int const status = action.run({}, rules);
        lines = action.output_lines().join('|').replace(folder.path() + '/', "");
        return status;
    }
    /// One source with one rule: its status, its lines in `lines`, its target in `target`.
    int run(char const* name, QByteArray const& contents, TEST_RULES::PROPERTIES properties) {
        PHYSICAL_PATH const source(folder.write(QStringLiteral("raw/") + name, contents));
        ACTION_DDS_N action(source, processor);
        target = action.get_target();
        return run(action, TEST_RULES().add("", "Texture", properties));
    }

    dds_container::DDS_DESCRIPTION written() {
        QFile file(target);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        QByteArray const bytes = file.readAll();
        std::string cause;
        auto const description = dds_container::read_dds(
            {reinterpret_cast<std::uint8_t const*>(bytes.data()), static_cast<std::size_t>(bytes.size())}, cause);
        EXPECT_TRUE(description) << cause;
        return description.value_or(dds_container::DDS_DESCRIPTION());
    }
    /// Red, green, blue, alpha of the target's texel.
    std::array<int, 4> shown(std::uint32_t x, std::uint32_t y) {
        std::string cause;
        auto const picture = IMAGE_LOADER::load_picture(target.toStdString(), 0, 0, cause);
        EXPECT_TRUE(picture) << cause;
        std::size_t const at = 4 * (std::size_t{y} * picture->width + x);
        return {picture->rgba[at], picture->rgba[at + 1], picture->rgba[at + 2], picture->rgba[at + 3]};
    }

    TEST_FOLDER folder;
    NO_PROCESSOR processor;
    QString target;
    QString lines;
};

TEST_F(ACTION_DDS_N_RUN, names_and_targets) {
    ACTION_DDS_N const action(PHYSICAL_PATH(folder.path("raw/d/a.b.tga")), processor);
    EXPECT_EQ(action.get_target().text(), folder.path("out/d/a.b.dds"));
    ACTION_DDS_N pair(PHYSICAL_PATH(folder.path("raw/d/a.png")), processor,
                      PHYSICAL_PATH(QStringLiteral("/x/a_ab.png")), {}, {}, {});
    EXPECT_EQ(pair.get_target().text(), "/x/a_ab.dds");
    EXPECT_EQ(pair.get_name(false), "Convert texture");
    EXPECT_EQ(pair.get_name(true), "Convert texture (d/a.png)");
    EXPECT_EQ(pair.progress_max(), 1000);
}

TEST_F(ACTION_DDS_N_RUN, formats_levels_and_sizes) {
    struct CASE {
        char const* what;
        TEST_RULES::PROPERTIES properties;
        char const* four_cc;
        std::uint32_t width, height, levels;
    };
    CASE const cases[] = {
        {"default", {}, "DXT1", 32, 16, 6},
        {"no mip levels", {{"Mipmaps", false}}, "DXT1", 32, 16, 1},
        {"chosen by alpha", {{"CompressionFormat", "DXT1_or_DXT5"}}, "DXT1", 32, 16, 6},
        {"dxt3", {{"CompressionFormat", "dxt3"}}, "DXT3", 32, 16, 6},
        {"normal map", {{"CompressionFormat", "dxt5n"}, {"NormalMap", true}}, "DXT5", 32, 16, 6},
        {"uncompressed", {{"CompressionFormat", "rgba"}}, "", 32, 16, 6},
        {"uncompressed with gamma correction is DXT5",
         {{"CompressionFormat", "rgb"}, {"NeedGammaCorrection", true}},
         "DXT5",
         32,
         16,
         6},
        {"dropped", {{"DropMips", 1}}, "DXT1", 16, 8, 5},
        {"limited", {{"MaxSize", 8}}, "DXT1", 8, 4, 4},
    };
    for (CASE const& c : cases) {
        EXPECT_EQ(run("a.tga", plain_tga(32, 16), c.properties), ACTION_INTERFACE::STATUS_SUCCEEDED) << c.what;
        EXPECT_EQ(lines, "") << c.what;
        auto const description = written();
        EXPECT_EQ(description.four_cc, c.four_cc) << c.what;
        EXPECT_EQ(description.width, c.width) << c.what;
        EXPECT_EQ(description.height, c.height) << c.what;
        EXPECT_EQ(description.mip_count, c.levels) << c.what;
    }
}

TEST_F(ACTION_DDS_N_RUN, texels_arrive) {
    run("a.tga", plain_tga(32, 16), {{"CompressionFormat", "rgba"}});
    EXPECT_EQ(shown(0, 0), (std::array{200, 0, 0, 255}));
    EXPECT_EQ(shown(31, 15), (std::array{200, 120, 248, 255}));
    // A name that ends in capitals is a TGA all the same; alpha that varies makes DXT5 and is kept.
    run("b.TGA",
        tga(8, 8,
            [](int x, int) {
                return std::array{0, 0, 0, x < 4 ? 0 : 255};
            }),
        {{"CompressionFormat", "dxt1_or_dxt5"}});
    EXPECT_EQ(written().four_cc, "DXT5");
    EXPECT_EQ(shown(0, 0)[3], 0);
    EXPECT_EQ(shown(7, 0)[3], 255);
    // A PNG's working image keeps its byte order, so red and blue come out exchanged.
    run("c.PNG", png(8, 8), {{"CompressionFormat", "rgba"}});
    EXPECT_EQ(shown(1, 1), (std::array{10, 20, 250, 255}));
}

TEST_F(ACTION_DDS_N_RUN, premultiplied_alpha_and_the_one_bit_chain) {
    QByteArray const cut_out = tga(16, 16, [](int x, int y) {
        return std::array{50, 100, 200, (x + y) % 2 ? 255 : 0};
    });
    run("a.tga", cut_out, {{"CompressionFormat", "rgba"}, {"PremultipliedAlpha", true}});
    EXPECT_EQ(shown(0, 0), (std::array{0, 0, 0, 0}));
    EXPECT_EQ(shown(1, 0), (std::array{200, 100, 50, 255}));

    run("a.tga", cut_out,
        {{"CompressionFormat", "dxt1_or_dxt1a"}, {"UseHighQualityOneBitAlphaFiltering", true}, {"Mipmaps", false}});
    auto const description = written();
    EXPECT_EQ(description.mip_count, 5U);
    std::string cause;
    auto const level = IMAGE_LOADER::load_picture(target.toStdString(), 1, 0, cause);
    ASSERT_TRUE(level) << cause;
    int opaque = 0;
    for (std::size_t alpha = 3; alpha < level->rgba.size(); alpha += 4)
        opaque += level->rgba[alpha] == 255;
    EXPECT_EQ(opaque, 32);
}

TEST_F(ACTION_DDS_N_RUN, compressor_settings_matter) {
    QByteArray const rough = tga(32, 32, [](int x, int y) {
        return std::array{(x * x + y * 7) % 256, (x * y * 3) % 256, (x * 37 + y * y) % 256, 255};
    });
    auto const bytes = [&](TEST_RULES::PROPERTIES properties) {
        EXPECT_EQ(run("a.tga", rough, properties), ACTION_INTERFACE::STATUS_SUCCEEDED) << lines.toStdString();
        QFile file(target);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    };
    QByteArray const box = bytes({});
    EXPECT_EQ(bytes({}), box);
    EXPECT_EQ(bytes({{"MipMapFilterType", ""}, {"MipmMapFilterType", "Box"}}), box);
    QByteArray const kaiser = bytes({{"MipMapFilterType", ""}, {"MipmMapFilterType", "Kaiser"}});
    QByteArray const triangle = bytes({{"MipMapFilterType", ""}, {"MipmMapFilterType", "triangle"}});
    QByteArray const normal = bytes({{"NormalMap", true}});
    QByteArray const fastest = bytes({{"FastestCompressionQuality", true}});
    QByteArray const gamma = bytes({{"CompressionFormat", "dxt5n"}, {"NeedGammaCorrection", true}});
    QByteArray const no_gamma = bytes({{"CompressionFormat", "dxt5n"}});
    std::set<QByteArray> const all{box, kaiser, triangle, normal, fastest, gamma, no_gamma};
    EXPECT_EQ(all.size(), 7U);
    // Filters change levels, not the top.
    EXPECT_EQ(kaiser.mid(128, 512), box.mid(128, 512));
}

TEST_F(ACTION_DDS_N_RUN, dds_sources_keep_their_levels) {
    run("a.tga", plain_tga(16, 16), {{"CompressionFormat", "dxt1"}});
    QFile file(target);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(run("b.dds", file.readAll(), {{"CompressionFormat", "rgba"}, {"DropMips", 1}}),
              ACTION_INTERFACE::STATUS_SUCCEEDED);
    auto const description = written();
    EXPECT_EQ(description.width, 8U);
    EXPECT_EQ(description.mip_count, 4U);
}

TEST_F(ACTION_DDS_N_RUN, opacity_is_judged_before_channels_move) {
    // Opaque by alpha, though the parallax shuffle leaves an alpha of 200.
    QByteArray const opaque = tga(8, 8, [](int, int) { return std::array{10, 20, 200, 255}; });
    run("a.tga", opaque, {{"CompressionFormat", "dxt1_or_dxt5"}, {"ParallaxMap", true}});
    EXPECT_EQ(written().four_cc, "DXT1");
    // Multiplied first, shuffled then: blue 40 is the alpha, alpha 30 · 40 / 255 the red.
    run("a.tga",
        tga(8, 8,
            [](int, int) {
                return std::array{10, 20, 30, 40};
            }),
        {{"CompressionFormat", "rgba"}, {"ParallaxMap", true}, {"PremultipliedAlpha", true}});
    EXPECT_EQ(shown(0, 0), (std::array{255, 3, 40, 5}));
}

TEST_F(ACTION_DDS_N_RUN, a_file_that_cannot_be_written_whole_is_a_failure) {
    folder.write("raw/a.tga", plain_tga(64, 64));
    ACTION_DDS_N action(PHYSICAL_PATH(folder.path("raw/a.tga")), processor);
    int status = 0;
    {
        FULL_DISK const disk(4096);
        status = run(action, TEST_RULES().add("", "Texture", {{"CompressionFormat", "rgba"}}));
    }
    EXPECT_EQ(status, ACTION_INTERFACE::STATUS_FAILED);
    EXPECT_EQ(lines, "File Writing Error");
    EXPECT_FALSE(QFile::exists(action.get_target()));
}

TEST_F(ACTION_DDS_N_RUN, failures_leave_no_target) {
    struct CASE {
        char const* name;
        QByteArray contents;
        TEST_RULES::PROPERTIES properties;
        char const* lines;
    };
    QByteArray const lying = QByteArray::fromHex("000002000000000000000000ffffffff2028") + "ten bytes.";
    QByteArray const six_by_eight = plain_tga(6, 8);
    char const* const multiple = "Texture dimensions are invalid; Must be multiple of 4!!!";
    char const* const unreadable = "Attempting to compress raw/a.tga but it does not exist !";
    CASE const cases[] = {
        {"a.tga", lying, {}, unreadable},
        {"a.tga", plain_tga(8, 8).left(100), {}, unreadable},
        {"a.tga", png(8, 8), {}, unreadable},
        {"a.tga", plain_tga(0, 8), {}, unreadable},
        {"a.png", "no png", {}, "Failed to load image from 'raw/a.png'!"},
        {"a.dds", "DDS ", {}, "Failed to load image from 'raw/a.dds'!"},
        {"a.tga", six_by_eight, {{"CompressionFormat", "dxt5"}}, multiple},
        {"a.tga", six_by_eight, {{"CompressionFormat", "xdxtx"}}, multiple},
        {"a.tga", six_by_eight, {{"CompressionFormat", "dds"}}, "Compression Format Unrecognised!"},
    };
    for (CASE const& c : cases) {
        // What an earlier build left must not pass for this one's result.
        QString const earlier = folder.write("out/a.dds", "earlier");
        EXPECT_EQ(run(c.name, c.contents, c.properties), ACTION_INTERFACE::STATUS_FAILED) << c.lines;
        EXPECT_EQ(lines, c.lines);
        EXPECT_FALSE(QFile::exists(earlier)) << c.lines;
    }
    ACTION_DDS_N missing(PHYSICAL_PATH(folder.path("raw/none.png")), processor);
    EXPECT_EQ(run(missing, TEST_RULES().add("", "Texture", {})), ACTION_INTERFACE::STATUS_FAILED);
    EXPECT_EQ(lines, "Failed to open 'raw/none.png' for reading!");
}

TEST_F(ACTION_DDS_N_RUN, sides_that_are_no_multiple_of_4_are_fine_without_dxt) {
    EXPECT_EQ(run("a.tga", plain_tga(6, 9), {{"CompressionFormat", "rgba"}}), ACTION_INTERFACE::STATUS_SUCCEEDED);
    EXPECT_EQ(written().height, 9U);
}

TEST_F(ACTION_DDS_N_RUN, unusable_rules_are_reported_and_succeed_without_a_file) {
    EXPECT_EQ(run("a.tga", plain_tga(8, 8), {{"Compressor", "Foo"}}), ACTION_INTERFACE::STATUS_SUCCEEDED);
    EXPECT_EQ(lines, "Unknown compressor type: foo|Failed in gathering the rules");
    EXPECT_FALSE(QFile::exists(target));
    ACTION_DDS_N action(PHYSICAL_PATH(folder.path("raw/a.tga")), processor);
    EXPECT_EQ(run(action, TEST_RULES()), ACTION_INTERFACE::STATUS_SUCCEEDED);
    EXPECT_EQ(lines, "Failed to read Texture2 Rules !|Failed in gathering the rules");
}

TEST_F(ACTION_DDS_N_RUN, overrides_take_the_place_of_rule_values) {
    PHYSICAL_PATH const source(folder.write("raw/a.tga", tga(8, 8, [](int, int) {
                                                return std::array{50, 100, 200, 128};
                                            })));
    PHYSICAL_PATH const to(folder.path("out/a_ab.tga"));
    target = folder.path("out/a_ab.dds");
    TEST_RULES const rules = TEST_RULES().add(
        "", "Texture", {{"CompressionFormat", "dxt1"}, {"PremultipliedAlpha", true}, {"Mipmaps", false}});

    ACTION_DDS_N other_format(source, processor, to, "foo", "rgba", "TRUE");
    EXPECT_EQ(run(other_format, rules), ACTION_INTERFACE::STATUS_SUCCEEDED);
    EXPECT_EQ(lines, "Unknown compressor type: foo");
    EXPECT_EQ(shown(0, 0), (std::array{200, 100, 50, 128}));

    ACTION_DDS_N premultiplied(source, processor, to, "", "rgba", "true");
    EXPECT_EQ(run(premultiplied, rules), ACTION_INTERFACE::STATUS_SUCCEEDED);
    EXPECT_EQ(shown(0, 0), (std::array{100, 50, 25, 128}));

    // Given as it is: no lower case, so not a known name.
    ACTION_DDS_N upper_case(source, processor, to, "", "BC7", "");
    EXPECT_EQ(run(upper_case, rules), ACTION_INTERFACE::STATUS_FAILED);
    EXPECT_EQ(lines, "Compression Format Unrecognised!");
}

}  // namespace
