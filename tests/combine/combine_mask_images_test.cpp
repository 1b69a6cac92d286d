// Which channel comes from which file, and what is said of files that do not fit.
#include "combine/combine_mask_images.hpp"

#include "platform/image_loader/image_memory.hpp"
#include "tests/dds/test_images.hpp"
#include "tests/host/framework/test_folder.hpp"
#include "tests/support/test_tga.hpp"

#include <gtest/gtest.h>

namespace {

class COMBINE_MASK_IMAGES : public testing::Test {
protected:
    PHYSICAL_PATH file(char const* name, std::array<int, 4> const& texel, int width = 4, int height = 4) {
        return PHYSICAL_PATH(folder.write(name, tga(width, height, [&](int x, int y) {
                                              auto varied = texel;
                                              for (int& channel : varied)
                                                  channel += x + 4 * y;
                                              return varied;
                                          })));
    }
    QString said() { return sink.lines.join('|').replace(folder.path() + '/', ""); }

    TEST_FOLDER folder;
    TEST_SINK sink;
};

TEXEL texel(std::optional<QE::IMAGE32> const& image, std::uint32_t x, std::uint32_t y) {
    EXPECT_TRUE(image);
    if (!image)
        return {};
    auto const bytes = image->pixel(x, y);
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

TEST_F(COMBINE_MASK_IMAGES, channels_of_three_and_of_four) {
    PHYSICAL_PATH const a = file("a.tga", {10, 20, 30, 40});
    PHYSICAL_PATH const b = file("b.tga", {50, 60, 70, 80});
    PHYSICAL_PATH const c = file("c.tga", {90, 100, 110, 120});
    PHYSICAL_PATH const d = file("d.tga", {130, 140, 150, 160});
    PHYSICAL_PATH const none;
    PHYSICAL_PATH const missing(folder.path("missing.tga"));

    EXPECT_EQ(texel(combine_mask_images_3(sink, a, b, c, true, true, true), 3, 2), (TEXEL{101, 71, 41, 1}));
    EXPECT_EQ(texel(combine_mask_images_3(sink, none, missing, c, false, false, true), 0, 0), (TEXEL{90, 0, 0, 1}));
    EXPECT_EQ(texel(combine_mask_images_4(sink, a, b, c, d, true), 1, 0), (TEXEL{91, 61, 31, 151}));
    EXPECT_EQ(texel(combine_mask_images_4(sink, a, b, c, d, false), 1, 0), (TEXEL{91, 61, 31, 161}));
    EXPECT_EQ(texel(combine_mask_images_4(sink, a, a, a, missing, true), 0, 1), (TEXEL{14, 24, 34, 255}));
    EXPECT_EQ(texel(combine_mask_images_4(sink, none, none, none, a, true), 0, 0), (TEXEL{0, 0, 0, 30}));
    EXPECT_EQ(said(), "");
}

TEST_F(COMBINE_MASK_IMAGES, what_is_wrong_is_said_in_one_line) {
    PHYSICAL_PATH const a = file("a.tga", {1, 2, 3, 4});
    PHYSICAL_PATH const wide = file("wide.tga", {1, 2, 3, 4}, 8, 4);
    PHYSICAL_PATH const flat = file("flat.tga", {1, 2, 3, 4}, 4, 0);
    PHYSICAL_PATH const broken(folder.write("broken.tga", "no TGA"));
    PHYSICAL_PATH const none;
    struct CASE {
        PHYSICAL_PATH paths[3];
        bool required[3];
        char const* line;
    };
    char const* const bad_size = "Mask image size invalid!";
    CASE const cases[] = {
        {{broken, none, none}, {true, true, true}, "broken.tga Required but not found !"},
        {{a, broken, none}, {true, true, true}, "broken.tga Required but not found !"},
        {{a, a, broken}, {true, true, true}, "broken.tga Required but not found"},
        {{a, wide, broken}, {true, true, true}, "broken.tga Required but not found"},
        {{a, wide, none}, {true, true, false}, bad_size},
        {{wide, none, a}, {false, false, false}, bad_size},
        {{none, none, none}, {false, false, false}, bad_size},
        {{flat, none, none}, {true, false, false}, bad_size},
        {{flat, a, none}, {false, false, false}, bad_size},
    };
    for (CASE const& c : cases) {
        sink.lines.clear();
        EXPECT_FALSE(combine_mask_images_3(sink, c.paths[0], c.paths[1], c.paths[2], c.required[0], c.required[1],
                                           c.required[2]));
        EXPECT_EQ(said(), c.line);
    }
    sink.lines.clear();
    EXPECT_FALSE(combine_mask_images_4(sink, none, broken, none, none, true));
    EXPECT_FALSE(combine_mask_images_4(sink, a, none, none, wide, true));
    EXPECT_FALSE(combine_mask_images_4(sink, none, none, none, flat, true));
    EXPECT_EQ(said(), QString(" No mask images found!|") + bad_size + "|" + bad_size);
}

TEST_F(COMBINE_MASK_IMAGES, memory_holds_the_result_and_one_source) {
    std::vector<PHYSICAL_PATH> paths;
    for (char const* const name : {"a.tga", "b.tga", "c.tga", "d.tga"})
        paths.push_back(file(name, {1, 2, 3, 4}, 2048, 16));
    // What other cases had at their worst is far less than what this one needs at least.
    EXPECT_TRUE(combine_mask_images_4(sink, paths[0], paths[1], paths[2], paths[3], true));
    std::uint64_t const image_bytes = 2048 * 16 * 4;
    EXPECT_GE(IMAGE_LOADER::image_allocation_statistics().high_water_bytes, image_bytes);
    EXPECT_LE(IMAGE_LOADER::image_allocation_statistics().high_water_bytes, 2 * image_bytes);
}

}  // namespace
