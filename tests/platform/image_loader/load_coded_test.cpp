// What becomes of the many kinds of PNG, TIF and JPG: always eight bits in four channels.
#include "platform/image_loader/image.hpp"

#include "tests/platform/image_loader/coded_files.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>

namespace {

using namespace IMAGE_LOADER;
using platform_test::BYTES;
using platform_test::make_png;
using platform_test::make_tif;
using platform_test::PNG_FILE;
using platform_test::TIF_FILE;

BYTES level_0(IMAGE const& image) {
    auto const level = image.level(0);
    return {level.begin(), level.end()};
}

TEST(image_from_png, keeps_red_first_and_alpha_of_every_kind) {
    struct CASE {
        char const* name;
        PNG_FILE png;
        BYTES texels;
    };
    static CASE const cases[] = {
        {"RGBA", {1, 2, 8, 6, {}, {}, false, {0, 1, 2, 3, 4, 0, 5, 6, 7, 8}}, {1, 2, 3, 4, 5, 6, 7, 8}},
        {"RGB", {1, 1, 8, 2, {}, {}, false, {0, 1, 2, 3}}, {1, 2, 3, 255}},
        {"RGB with a colour key",
         {2, 1, 8, 2, {}, {0, 1, 0, 2, 0, 3}, false, {0, 1, 2, 3, 1, 2, 4}},
         {1, 2, 3, 0, 1, 2, 4, 255}},
        {"grey", {1, 1, 8, 0, {}, {}, false, {0, 9}}, {9, 9, 9, 255}},
        {"grey of 1 bit", {2, 1, 1, 0, {}, {}, false, {0, 0x40}}, {0, 0, 0, 255, 255, 255, 255, 255}},
        {"grey of 2 bits", {2, 1, 2, 0, {}, {}, false, {0, 0x60}}, {85, 85, 85, 255, 170, 170, 170, 255}},
        {"grey of 4 bits", {2, 1, 4, 0, {}, {}, false, {0, 0x1f}}, {17, 17, 17, 255, 255, 255, 255, 255}},
        {"grey with a key", {2, 1, 8, 0, {}, {0, 9}, false, {0, 9, 8}}, {9, 9, 9, 0, 8, 8, 8, 255}},
        {"grey of 1 bit with a key", {2, 1, 1, 0, {}, {0, 1}, false, {0, 0x40}}, {0, 0, 0, 255, 255, 255, 255, 0}},
        {"grey of 4 bits with a key", {2, 1, 4, 0, {}, {0, 5}, false, {0, 0x51}}, {85, 85, 85, 0, 17, 17, 17, 255}},
        {"grey and alpha", {1, 1, 8, 4, {}, {}, false, {0, 9, 7}}, {9, 9, 9, 7}},
        {"palette", {2, 1, 8, 3, {1, 2, 3, 4, 5, 6}, {}, false, {0, 1, 0}}, {4, 5, 6, 255, 1, 2, 3, 255}},
        {"palette with alpha", {2, 1, 8, 3, {1, 2, 3, 4, 5, 6}, {77}, false, {0, 1, 0}}, {4, 5, 6, 255, 1, 2, 3, 77}},
        {"palette of 1 bit with alpha",
         {2, 1, 1, 3, {1, 2, 3, 4, 5, 6}, {77}, false, {0, 0x40}},
         {1, 2, 3, 77, 4, 5, 6, 255}},
        {"grey of 16 bits", {1, 1, 16, 0, {}, {}, false, {0, 0x80, 0xff}}, {128, 128, 128, 255}},
        {"grey of 16 bits, rounded", {1, 1, 16, 0, {}, {}, false, {0, 0x01, 0x90}}, {2, 2, 2, 255}},
        {"grey and alpha of 16 bits", {1, 1, 16, 4, {}, {}, false, {0, 9, 9, 7, 7}}, {9, 9, 9, 7}},
        {"RGB of 16 bits", {1, 1, 16, 2, {}, {}, false, {0, 1, 1, 2, 2, 3, 3}}, {1, 2, 3, 255}},
        {"RGBA of 16 bits", {1, 1, 16, 6, {}, {}, false, {0, 1, 1, 2, 2, 3, 3, 4, 4}}, {1, 2, 3, 4}},
        {"gamma is not applied", {1, 1, 8, 2, {}, {}, true, {0, 100, 100, 100}}, {100, 100, 100, 255}},
    };
    for (CASE const& c : cases) {
        SCOPED_TRACE(c.name);
        IMAGE const image(make_png(c.png));
        ASSERT_TRUE(image.valid()) << image.cause();
        EXPECT_EQ(image.texel_format(), TTF_R8G8B8A8);
        EXPECT_EQ(image.image_format(), IMAGE_FORMAT::png);
        EXPECT_EQ(image.number_of_mips(), 1u);
        EXPECT_EQ(image.width(), c.png.width);
        EXPECT_EQ(image.height(), c.png.height);
        EXPECT_EQ(level_0(image), c.texels);
    }
}

BYTES floats(std::initializer_list<float> values) {
    BYTES bytes;
    for (float const value : values) {
        for (int i = 0; i < 4; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(std::bit_cast<std::uint32_t>(value) >> (8 * i)));
        }
    }
    return bytes;
}

TEST(image_from_tif, becomes_blue_first) {
    struct CASE {
        char const* name;
        BYTES file;
        BYTES texels;
    };
    static CASE const cases[] = {
        {"RGB", make_tif({1, 2, 8, 3, 2, 1, false, {1, 2, 3, 4, 5, 6}}), {3, 2, 1, 255, 6, 5, 4, 255}},
        {"RGBA", make_tif({1, 1, 8, 4, 2, 1, true, {1, 2, 3, 4}}), {3, 2, 1, 4}},
        {"grey", make_tif({2, 1, 8, 1, 1, 1, false, {9, 7}}), {9, 9, 9, 255, 7, 7, 7, 255}},
        {"grey, white is 0", make_tif({1, 1, 8, 1, 0, 1, false, {9}}), {246, 246, 246, 255}},
        {"grey that does not tell how many samples",
         make_tif({2, 1, 8, 1, 1, 1, false, {9, 7}, false}),
         {9, 9, 9, 255, 7, 7, 7, 255}},
        {"offsets of 64 bits",
         make_tif({1, 2, 8, 3, 2, 1, false, {1, 2, 3, 4, 5, 6}, true, true}),
         {3, 2, 1, 255, 6, 5, 4, 255}},
        {"grey and alpha", make_tif({2, 1, 8, 2, 1, 1, true, {9, 7, 9, 8}}), {9, 9, 9, 7, 9, 9, 9, 8}},
        {"grey and alpha, offsets of 64 bits, white is 0",
         make_tif({1, 1, 8, 2, 0, 1, true, {9, 7}, true, true}),
         {246, 246, 246, 7}},
        {"CMYK", make_tif({1, 1, 8, 4, 5, 1, false, {255, 0, 0, 0}}), {255, 255, 0, 255}},
        {"grey of 16 bits", make_tif({1, 1, 16, 1, 1, 1, false, {0xff, 0x80}}), {128, 128, 128, 255}},
        {"RGB of 16 bits", make_tif({1, 1, 16, 3, 2, 1, false, {1, 1, 2, 2, 3, 3}}), {3, 2, 1, 255}},
        {"RGBA of 16 bits", make_tif({1, 1, 16, 4, 2, 1, true, {1, 1, 2, 2, 3, 3, 4, 4}}), {3, 2, 1, 4}},
        {"grey and alpha of 16 bits", make_tif({1, 1, 16, 2, 1, 1, true, {9, 9, 7, 7}}), {9, 9, 9, 7}},
        {"CMYK of 16 bits", make_tif({1, 1, 16, 4, 5, 1, false, {0xff, 0xff, 0, 0, 0, 0, 0, 0}}), {255, 255, 0, 255}},
        {"float grey",
         make_tif({2, 1, 32, 1, 1, 3, false, floats({0.5f, 7.0f})}),
         {128, 128, 128, 255, 255, 255, 255, 255}},
        {"float RGB", make_tif({1, 1, 32, 3, 2, 3, false, floats({-1.0f, 0.2f, 1.0f})}), {255, 51, 0, 255}},
        {"float RGBA", make_tif({1, 1, 32, 4, 2, 3, true, floats({0.0f, 0.2f, 1.0f, 0.4f})}), {255, 51, 0, 102}},
    };
    for (CASE const& c : cases) {
        SCOPED_TRACE(c.name);
        IMAGE const image(c.file);
        ASSERT_TRUE(image.valid()) << image.cause();
        EXPECT_EQ(image.texel_format(), TTF_B8G8R8A8);
        EXPECT_EQ(image.image_format(), IMAGE_FORMAT::tif);
        EXPECT_EQ(level_0(image), c.texels);
    }
}

// A grey JPG of 8 × 8 texels of 128: its one coefficient is 0, so tables of one code each are enough.
BYTES grey_jpg() {
    BYTES file(7 + 64, 1);
    BYTES const start = {0xff, 0xd8, 0xff, 0xdb, 0, 67, 0};
    std::copy(start.begin(), start.end(), file.begin());
    BYTES const rest = {
        0xff, 0xc0, 0, 11, 8,    0, 8, 0, 8,  1, 1,    0x11, 0,                               // frame
        0xff, 0xc4, 0, 20, 0x00, 1, 0, 0, 0,  0, 0,    0,    0,   0, 0, 0, 0, 0, 0, 0, 0, 0,  // DC: 0 → 0
        0xff, 0xc4, 0, 20, 0x10, 1, 0, 0, 0,  0, 0,    0,    0,   0, 0, 0, 0, 0, 0, 0, 0, 0,  // AC: 0 → end
        0xff, 0xda, 0, 8,  1,    1, 0, 0, 63, 0, 0x3f, 0xff, 0xd9};                           // scan
    file.insert(file.end(), rest.begin(), rest.end());
    return file;
}

TEST(image_from_jpg, becomes_blue_first_and_must_be_whole) {
    IMAGE const image(grey_jpg());
    ASSERT_TRUE(image.valid()) << image.cause();
    EXPECT_EQ(image.texel_format(), TTF_B8G8R8A8);
    EXPECT_EQ(image.image_format(), IMAGE_FORMAT::jpg);
    BYTES expected;
    for (int i = 0; i < 64; ++i) {
        expected.insert(expected.end(), {128, 128, 128, 255});
    }
    EXPECT_EQ(level_0(image), expected);

    BYTES cut = grey_jpg();
    cut.resize(cut.size() - 2);
    EXPECT_EQ(IMAGE(cut).cause(), "the JPG file ends within its texels");
}

TEST(image_from_coded_files, is_refused_with_its_reason) {
    PNG_FILE huge;
    huge.width = 65537;
    PNG_FILE many;
    many.width = 65536;
    many.height = 65536;
    PNG_FILE hollow;
    hollow.width = 65536;
    hollow.height = 4096;
    BYTES hollow_jpg = grey_jpg();
    static constexpr std::uint8_t frame[] = {0xff, 0xc0, 0, 11, 8};
    auto const sides = std::search(hollow_jpg.begin(), hollow_jpg.end(), std::begin(frame), std::end(frame)) + 5;
    std::fill(sides, sides + 4, 0x3e);
    sides[1] = sides[3] = 0x80;
    TIF_FILE hollow_tif;
    hollow_tif.width = hollow_tif.height = 16000;
    TIF_FILE wide;
    wide.width = 100000;
    BYTES cut = make_png({1, 2, 8, 6, {}, {}, false, {0, 1, 2, 3, 4, 0, 5, 6, 7, 8}});
    cut.resize(45);
    BYTES cut_tif = make_tif({1, 2, 8, 3, 2, 1, false, {1, 2, 3, 4, 5, 6}});
    cut_tif.pop_back();
    BYTES cut_deflate = make_tif({1, 1, 8, 3, 2, 1, false, BYTES(100), true, false, 8});
    cut_deflate.resize(cut_deflate.size() - 50);
    TIF_FILE const float_alpha = {1, 1, 32, 2, 1, 3, true, BYTES(8)};
    struct CASE {
        BYTES file;
        std::string cause;
    };
    static CASE const cases[] = {
        {make_tif(float_alpha), "grey with alpha is not supported in a TIF file of 32 bits a sample"},
        {{}, "this is no DDS, PNG, JPG or TIF file"},
        {BYTES(100, 'x'), "this is no DDS, PNG, JPG or TIF file"},
        {cut_tif, "the TIF file ends within its texels"},
        {cut_deflate, "the TIF file ends within its texels"},
        {cut, "the PNG file is damaged or of a kind that is not supported"},
        {{0xff, 0xd8, 0xff, 0xe0}, "the JPG file is damaged or of a kind that is not supported"},
        {make_png(huge), "the PNG header announces 65537 x 1 texels, more than an image may have"},
        {make_png(many), "the PNG header announces 65536 x 65536 texels, more than an image may have"},
        {make_png(hollow), "the PNG header announces 65536 x 4096 texels, more than a file of 68 bytes can hold"},
        {make_tif(wide), "the TIF header announces 100000 x 1 texels, more than an image may have"},
        {make_tif(hollow_tif), "the TIF header announces 16000 x 16000 texels, more than a file of " +
                                   std::to_string(make_tif(hollow_tif).size()) + " bytes can hold"},
        {hollow_jpg, "the JPG header announces 16000 x 16000 texels, more than a file of " +
                         std::to_string(hollow_jpg.size()) + " bytes can hold"},
    };
    for (CASE const& c : cases) {
        IMAGE const image(c.file);
        EXPECT_FALSE(image.valid());
        EXPECT_EQ(image.cause(), c.cause);
    }
}

}  // namespace
