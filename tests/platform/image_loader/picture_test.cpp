// Pictures out of files of every kind, described, and written as PNG.
#include "platform/image_loader/picture.hpp"

#include "platform/dds_container/dds_container.hpp"
#include "platform/image_loader/load_image_file.hpp"
#include "tests/platform/image_loader/coded_files.hpp"
#include "tests/platform/temporary_file.hpp"

#include <gtest/gtest.h>

namespace {

using namespace IMAGE_LOADER;
using platform_test::BYTES;
using platform_test::TEMPORARY_FILE;

BYTES const tga = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 32, 0x20, 1, 2, 3, 4};

BYTES volume_dds() {
    dds_container::DDS_DESCRIPTION d;
    d.header_kind = dds_container::HEADER_KIND::dx10;
    d.width = d.height = d.depth = 2;
    d.mip_count = 2;
    d.is_volume = true;
    d.format = dds_container::DXGI::r8_unorm;
    BYTES const top = {1, 2, 3, 4, 5, 6, 7, 8};
    BYTES const last = {9};
    std::vector<std::span<std::uint8_t const>> const levels = {top, last};
    std::string cause;
    return dds_container::write_dds(d, levels, cause).value_or(BYTES());
}

TEST(picture, comes_red_first_from_every_kind_of_file) {
    struct CASE {
        char const* extension;
        BYTES file;
        std::uint32_t level, slice;
        BYTES rgba;
    };
    static CASE const cases[] = {
        {".TGA", tga, 0, 0, {3, 2, 1, 4}},
        {".png", platform_test::make_png({1, 1, 8, 6, {}, {}, false, {0, 1, 2, 3, 4}}), 0, 0, {1, 2, 3, 4}},
        {".tif", platform_test::make_tif({1, 1, 8, 4, 2, 1, true, {1, 2, 3, 4}}), 0, 0, {1, 2, 3, 4}},
        {".dds", volume_dds(), 0, 1, {5, 0, 0, 255, 6, 0, 0, 255, 7, 0, 0, 255, 8, 0, 0, 255}},
        {".dds", volume_dds(), 1, 0, {9, 0, 0, 255}},
    };
    for (CASE const& c : cases) {
        SCOPED_TRACE(c.extension);
        TEMPORARY_FILE const file(c.extension, c.file);
        std::string cause;
        auto const picture = load_picture(file.path(), c.level, c.slice, cause);
        ASSERT_TRUE(picture) << cause;
        EXPECT_EQ(picture->rgba, c.rgba);
    }
}

TEST(picture, that_a_file_has_not_is_named) {
    TEMPORARY_FILE const dds(".dds", volume_dds());
    TEMPORARY_FILE const single(".tga", tga);
    TEMPORARY_FILE const text(".txt", BYTES{'h', 'i'});
    std::string cause;
    EXPECT_FALSE(load_picture(dds.path(), 2, 0, cause));
    EXPECT_EQ(cause, "there is no mip level 2; the file has 2");
    EXPECT_FALSE(load_picture(dds.path(), 1, 1, cause));
    EXPECT_EQ(cause, "mip level 1 has no slice 1");
    EXPECT_FALSE(load_picture(single.path(), 1, 0, cause));
    EXPECT_EQ(cause, "the file holds one picture only");
    EXPECT_FALSE(load_picture(text.path(), 0, 0, cause));
    EXPECT_EQ(cause, "this is no TGA, DDS, PNG, JPG or TIF file");
    EXPECT_FALSE(load_picture("/no/such/file.png", 0, 0, cause));
    EXPECT_EQ(cause, "the file cannot be opened");
}

TEST(description, says_what_a_file_holds) {
    std::string cause;
    BYTES short_volume = volume_dds();
    short_volume.pop_back();
    TEMPORARY_FILE const dds(".dds", short_volume);
    auto const volume = describe(dds.path(), cause);
    ASSERT_TRUE(volume) << cause;
    EXPECT_EQ(volume->kind, "DDS");
    EXPECT_EQ(volume->header_kind, "DX10");
    EXPECT_EQ(volume->format, "R8_UNORM");
    EXPECT_EQ(volume->depth, 2u);
    EXPECT_EQ(volume->mips, 2u);
    EXPECT_TRUE(volume->is_volume);
    EXPECT_FALSE(volume->has_alpha);
    EXPECT_EQ(volume->payload_expected, 9u);
    EXPECT_EQ(volume->payload_actual, 8u);

    TEMPORARY_FILE const tga_file(".tga", tga);
    auto const single = describe(tga_file.path(), cause);
    ASSERT_TRUE(single) << cause;
    EXPECT_EQ(single->kind, "TGA");
    EXPECT_EQ(single->format, "32-bit true colour");
    EXPECT_TRUE(single->has_alpha);
    EXPECT_EQ(single->payload_expected, 4u);
    EXPECT_EQ(single->payload_actual, 4u);

    struct CASE {
        platform_test::PNG_FILE png;
        char const* format;
        bool has_alpha;
    };
    static CASE const pngs[] = {
        {{1, 1, 8, 6, {}, {}, false, {0, 1, 2, 3, 4}}, "32-bit RGBA", true},
        {{1, 1, 8, 2, {}, {}, false, {0, 1, 2, 3}}, "24-bit RGB", false},
        {{1, 1, 16, 0, {}, {}, false, {0, 1, 2}}, "16-bit grey", false},
        {{1, 1, 8, 3, {1, 2, 3}, {7}, false, {0, 0}}, "8-bit palette", true},
    };
    for (auto const& c : pngs) {
        TEMPORARY_FILE const file(".png", platform_test::make_png(c.png));
        auto const png = describe(file.path(), cause);
        ASSERT_TRUE(png) << cause;
        EXPECT_EQ(png->format, c.format);
        EXPECT_EQ(png->has_alpha, c.has_alpha) << c.format;
    }
}

TEST(description, names_legacy_texels_by_their_channels) {
    struct CASE {
        dds_container::PIXEL_MASKS masks;
        char const* name;
    };
    static CASE const cases[] = {
        {{32, 0xff0000, 0xff00, 0xff, 0xff000000}, "A8R8G8B8"},
        {{24, 0xff, 0xff00, 0xff0000, 0}, "B8G8R8"},
        {{16, 0x7c00, 0x3e0, 0x1f, 0}, "X1R5G5B5"},
        {{16, 0xff, 0, 0, 0xff00, true}, "A8L8"},
    };
    for (CASE const& c : cases) {
        dds_container::DDS_DESCRIPTION d;
        d.width = d.height = 1;
        d.masks = c.masks;
        BYTES const texel(c.masks.bits_per_texel / 8);
        std::vector<std::span<std::uint8_t const>> const levels = {texel};
        std::string cause;
        TEMPORARY_FILE const file(".dds", dds_container::write_dds(d, levels, cause).value_or(BYTES()));
        auto const description = describe(file.path(), cause);
        ASSERT_TRUE(description) << cause;
        EXPECT_EQ(description->format, c.name);
        EXPECT_EQ(description->header_kind, "legacy");
    }
}

TEST(png, is_written_whole_or_not_at_all) {
    PICTURE const picture = {2, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 255, 0, 0, 0, 0}};
    TEMPORARY_FILE const file(".png");
    std::string cause;
    ASSERT_TRUE(write_png(file.path(), picture, cause)) << cause;
    auto const again = load_picture(file.path(), 0, 0, cause);
    ASSERT_TRUE(again) << cause;
    EXPECT_EQ(again->rgba, picture.rgba);
    EXPECT_FALSE(std::filesystem::exists(file.path().string() + ".part"));

    EXPECT_FALSE(write_png("/no/such/folder/a.png", picture, cause));
    EXPECT_EQ(cause, "the file cannot be written: No such file or directory");
    EXPECT_FALSE(write_png(file.path(), PICTURE{2, 2, {1}}, cause));
    EXPECT_EQ(cause, "the picture is empty");
    EXPECT_TRUE(load_picture(file.path(), 0, 0, cause));
}

TEST(load_image_file, owns_what_it_reads) {
    TEMPORARY_FILE const file(".tga", tga);
    std::string cause;
    IMAGE const image = load_image_file(file.path(), cause);
    ASSERT_TRUE(image.valid()) << cause;
    EXPECT_EQ(image.image_format(), IMAGE_FORMAT::tga);
    EXPECT_EQ(image.texel_format(), TTF_B8G8R8A8);
    EXPECT_EQ(BYTES(image.level(0).begin(), image.level(0).end()), (BYTES{1, 2, 3, 4}));
    EXPECT_FALSE(load_image_file("/no/such/file.tga", cause).valid());
    EXPECT_EQ(cause, "the file cannot be opened");
}

}  // namespace
