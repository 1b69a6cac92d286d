#include "combine/action_channel_combine.hpp"

#include "tests/combine/action_fixture.hpp"

#include <FreeImage.h>

namespace {

constexpr int succeeded = 2;
constexpr int failed = 4;

class ACTION_CHANNEL_COMBINE_RUN : public ACTION_FIXTURE {
protected:
    /// `sources` by channel, red first.
    int combine(char const* target_name, std::initializer_list<char const*> sources) {
        ACTION_CHANNEL_COMBINE action(PHYSICAL_PATH(folder.path("out/") + target_name), processor);
        std::size_t channel = 0;
        for (char const* const source : sources)
            action.set_channel_source(channel++, LOGICAL_PATH(*source != 0 ? QString("<raw>/") + source : QString()));
        int const status = run(action);
        registered = action.registered_files().size();
        return status;
    }
    static int bits_of(QString const& path) {
        FIBITMAP* const bitmap = FreeImage_Load(FIF_PNG, QFile::encodeName(path).constData(), 0);
        int const bits = static_cast<int>(FreeImage_GetBPP(bitmap));
        FreeImage_Unload(bitmap);
        return bits;
    }
    int registered = 0;
};

TEST_F(ACTION_CHANNEL_COMBINE_RUN, channels_land_where_they_should) {
    write("a.tga", flat({10, 10, 10, 255}));
    write("b.tga", flat({20, 20, 20, 255}));
    write("c.tga", flat({30, 30, 30, 255}));
    EXPECT_EQ(combine("new/folder/all.png", {"a.tga", "b.tga", "c.tga", "a.tga"}), succeeded);
    EXPECT_EQ(lines, "");
    EXPECT_EQ(registered, 1);
    EXPECT_EQ(shown(), (std::array{10, 20, 30, 10}));
    EXPECT_EQ(bits_of(target), 32);
    EXPECT_EQ(combine("red.png", {"b.tga"}), succeeded);
    EXPECT_EQ(shown(), (std::array{20, 0, 0, 255}));
    EXPECT_EQ(bits_of(target), 24);
    EXPECT_EQ(combine("same.jpg", {"c.tga", "c.tga", "c.tga"}), succeeded);
    EXPECT_EQ(shown(), (std::array{30, 30, 30, 255}));
}

TEST_F(ACTION_CHANNEL_COMBINE_RUN, name_and_sources) {
    ACTION_CHANNEL_COMBINE action(PHYSICAL_PATH(folder.path("out/blendmap.jpg")), processor);
    action.set_target_path(PHYSICAL_PATH(folder.path("out/maps")));
    action.set_channel_source(3, LOGICAL_PATH(QStringLiteral("<raw>/w.tif")));
    action.set_channel_source(1, LOGICAL_PATH(QStringLiteral("<raw>/d.tif")));
    EXPECT_EQ(action.get_name(false), "Convert texture");
    EXPECT_EQ(action.get_name(true), "Convert texture (" + folder.path("out/maps/blendmap.jpg") + ")");
    EXPECT_EQ(sources_of(action), "d.tif w.tif");
    EXPECT_EQ(action.progress_max(), 1000);
}

TEST_F(ACTION_CHANNEL_COMBINE_RUN, levels_each_source_over_its_padding) {
    // Three wide: each row of the bitmap has a byte of padding, so the nine bytes from the first on are two rows with
    // their padding and one pixel of the last row.
    write("a.tga", tga(3, 3, [](int, int) { return std::array{40, 40, 40, 255}; }));
    write("b.tga", flat({40, 40, 40, 255}, 3, 3));
    rules.add("a.tga", "TextureLevelling", {{"InputMax", 40}});
    EXPECT_EQ(combine("l.png", {"a.tga", "b.tga"}), succeeded);
    // Rows are stored from the bottom up.
    EXPECT_EQ(shown(0, 2), (std::array{255, 40, 0, 255}));
    EXPECT_EQ(shown(0, 0), (std::array{255, 40, 0, 255}));
    EXPECT_EQ(shown(1, 0), (std::array{40, 40, 0, 255}));
}

TEST_F(ACTION_CHANNEL_COMBINE_RUN, failures) {
    write("a.tga", flat({1, 1, 1, 255}));
    write("big.tga", flat({1, 1, 1, 255}, 8, 9));
    write("a.xyz", "?");
    rules.add("a.tga", "TextureLevelling", {{"OutputMin", "low"}});
    write("fraction.tga", flat({1, 1, 1, 255}));
    rules.add("fraction.tga", "TextureLevelling", {{"InputMin", 1.0}, {"InputMax", 128.7}});
    // Announces 25,000 texels a side and holds none: one strip of one byte.
    write("vast.tif", QByteArray::fromHex("49492a0008000000 0800"
                                          "00010400 01000000 a8610000  01010400 01000000 a8610000"
                                          "02010300 01000000 08000000  03010300 01000000 01000000"
                                          "06010300 01000000 01000000  11010400 01000000 07000000"
                                          "16010400 01000000 a8610000  17010400 01000000 01000000 00000000"));
    struct CASE {
        char const* target;
        std::initializer_list<char const*> sources;
        char const* lines;
    };
    CASE const cases[] = {
        {"t.xyz", {"none.tga"}, "Unknown image file format: out/t.xyz"},
        {"t.png",
         {"a.xyz", "none.tga"},
         "Unknown image file format: <raw>/a.xyz|Source file not found: <raw>/none.tga"},
        {"t.png",
         {"big.tga", "a.tga", "a.tga", "big.tga"},
         "Source are of different size!|Source are of different size!"},
        {"t.jpg", {"a.tga", "", "", "big.tga"}, "Source are of different size!|Jpeg doesn't support alpha channel!"},
        {"t.jpg", {"a.tga", "a.tga", "a.tga", "a.tga"}, "Jpeg doesn't support alpha channel!"},
        {"t.png", {"vast.tif"}, "Failed to load: <raw>/vast.tif"},
        {"t.png", {"fraction.tga"}, "Error in TextureLevelling rule: InputMax is not a number!"},
        {"t.png",
         {"a.tga", "a.tga"},
         "Error in TextureLevelling rule: OutputMin is not a number!|Error in TextureLevelling rule: OutputMin is not "
         "a "
         "number!"},
    };
    for (CASE const& c : cases) {
        EXPECT_EQ(combine(c.target, c.sources), failed) << c.lines;
        EXPECT_EQ(lines, c.lines);
        EXPECT_EQ(registered, 0);
        EXPECT_FALSE(QFile::exists(target)) << c.lines;
    }
    EXPECT_EQ(combine("none.png", {}), failed);
    EXPECT_EQ(lines, "Failed to save: out/none.png");
    EXPECT_EQ(combine("t.gif", {"big.tga"}), failed);
    EXPECT_EQ(lines, "GIF files cannot hold 24-bit RGB texels|Failed to save: out/t.gif");
    EXPECT_FALSE(QFile::exists(target));
}

TEST_F(ACTION_CHANNEL_COMBINE_RUN, what_freeimage_says_becomes_lines) {
    write("broken.png", QByteArray::fromHex("89504e470d0a1a0a") + "and no more of a PNG");
    EXPECT_EQ(combine("t.png", {"broken.png", "broken.png"}), failed);
    QStringList const said = lines.split('|');
    // Once for the file, not for each channel that it is read for.
    ASSERT_EQ(said.size(), 3) << lines.toStdString();
    EXPECT_FALSE(said[0].isEmpty());
    EXPECT_EQ(said[1], "Failed to load: <raw>/broken.png");
    EXPECT_EQ(said[2], said[1]);
    // Nobody listens any more.
    FreeImage_OutputMessageProc(FIF_PNG, "lost");
}

}  // namespace
