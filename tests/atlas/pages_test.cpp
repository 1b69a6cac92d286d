// What stands in pages and their files, and what is said when they cannot be made.
#include "atlas/load_source_texture.hpp"
#include "atlas/resample.hpp"
#include "atlas/texture_atlas_2d.hpp"
#include "atlas/texture_atlas_cube.hpp"
#include "atlas/texture_atlas_volume.hpp"
#include "platform/dds_container/dds_container.hpp"
#include "platform/image_loader/load_image_file.hpp"
#include "platform/image_loader/picture.hpp"
#include "tests/atlas/textures.hpp"
#include "tests/host/framework/test_folder.hpp"
#include "tests/support/test_tga.hpp"

#include <gtest/gtest.h>

namespace {

constexpr D3D_FORMAT dxt1 = four_cc_format("DXT1");

/// A number that tells texture, level and byte apart.
std::function<std::uint8_t(std::uint32_t, std::size_t)> marks(std::uint32_t texture_number) {
    return [=](std::uint32_t level, std::size_t byte) {
        return static_cast<std::uint8_t>(texture_number * 64 + level * 16 + byte % 16);
    };
}

/// Builds and finalizes; what is said goes to `messages`.
std::unique_ptr<ATLAS_BUILDER> build(ATLAS_OPTIONS const& options, TEXTURES const& sources, std::string& messages) {
    testing::internal::CaptureStderr();
    auto builder = std::make_unique<ATLAS_BUILDER>(options);
    for (auto const& [format, group] : group_by_format(sources))
        builder->build_pages(group);
    builder->finalize_all();
    messages = testing::internal::GetCapturedStderr();
    return builder;
}

TEST(atlas_pages, levels_lie_at_divided_places) {
    TEXTURES sources;
    sources.push_back(texture("a", 8, 8, D3D_FORMAT::l8, 4, marks(1)));
    sources.push_back(texture("b", 4, 4, D3D_FORMAT::l8, 3, marks(2)));
    std::string messages;
    ATLAS_OPTIONS const options = options_of({"-width", "16", "-height", "16", "-o", "p", "x"});
    auto const builder = build(options, sources, messages);
    EXPECT_EQ(messages, "");
    ASSERT_EQ(builder->groups()[0].size(), 1U);
    PIXEL_BUFFER const& page = *builder->groups()[0][0]->texels();
    ASSERT_EQ(page.width(), 16U);
    ASSERT_EQ(page.height(), 8U);
    ASSERT_EQ(page.levels(), 4U);  // as many as the largest has, not as the page could have
    // "b" lies at (8, 0): 4 × 4 texels, then 2 × 2 at (4, 0), then 1 at (2, 0); it has no fourth level.
    auto const at = [&](std::uint32_t level, std::size_t x, std::size_t y) {
        return page.slice(level, 0)[y * page.row_pitch(level) + x];
    };
    EXPECT_EQ(at(0, 0, 1), 64 + 8);
    EXPECT_EQ(at(0, 7, 0), 64 + 7);
    EXPECT_EQ(at(0, 8, 1), 128 + 4);
    EXPECT_EQ(at(0, 12, 0), 0);
    EXPECT_EQ(at(1, 3, 0), 64 + 16 + 3);
    EXPECT_EQ(at(1, 4, 1), 128 + 16 + 2);
    EXPECT_EQ(at(2, 2, 0), 128 + 32);
    EXPECT_EQ(at(3, 0, 0), 64 + 48);
    EXPECT_EQ(at(3, 1, 0), 0);
}

TEST(atlas_pages, blocks_are_copied_by_rows_of_blocks) {
    TEXTURES sources;
    sources.push_back(texture("a", 8, 8, dxt1, 2, marks(1)));
    sources.push_back(texture("b", 4, 4, dxt1, 1, marks(2)));
    std::string messages;
    ATLAS_OPTIONS const options = options_of({"-width", "16", "-height", "8", "-o", "p", "x"});
    auto const builder = build(options, sources, messages);
    PIXEL_BUFFER const& page = *builder->groups()[0][0]->texels();
    ASSERT_EQ(page.row_pitch(0), 32U);
    EXPECT_EQ(page.slice(0, 0)[0], 64);
    EXPECT_EQ(page.slice(0, 0)[32 + 8], 64 + 8);  // the lower right block of "a"
    EXPECT_EQ(page.slice(0, 0)[16 + 5], 128 + 5);
    EXPECT_EQ(page.slice(0, 0)[24], 0);
    EXPECT_EQ(page.slice(1, 0)[0], 64 + 16);
}

TEST(atlas_pages, messages) {
    struct CASE {
        char const* what;
        D3D_FORMAT format;
        std::uint32_t width;
        std::vector<std::string> options;
        char const* expected;
    };
    CASE const cases[] = {
        {"wider than the page",
         D3D_FORMAT::l8,
         64,
         {"-width", "32"},
         "*** Error: Inserting texture x/a into atlas failed.\n"
         "*** Error: Check that the texture has atlas-compatible dimensions.\n"},
        {"no 2D format",
         four_cc_format("UYVY"),
         8,
         {},
         "*** Error: Texture x/a has format that is unsupported for 2D atlases.\n"},
        {"blocks in a volume",
         dxt1,
         8,
         {"-volume", "-nomipmap"},
         "*** Error: Texture x/a has format that is unsupported for volume atlases.\n"},
        {"sources as they are loaded do not go into volumes",
         D3D_FORMAT::a8b8g8r8,
         8,
         {"-volume", "-nomipmap"},
         "*** Error: Texture x/a has format that is unsupported for volume atlases.\n"},
        {"larger than a volume can be",
         D3D_FORMAT::l8,
         4096,
         {"-volume", "-nomipmap"},
         "*** Error: Unable to create atlas for texture x/a.\n"
         "*** Error: Check that the texture has volume atlas-compatible dimensions.\n"},
    };
    TEST_FOLDER folder;
    for (CASE const& test : cases) {
        SCOPED_TRACE(test.what);
        TEXTURES sources;
        sources.push_back(texture("x/a", test.width, 4, test.format));
        std::vector<std::string> arguments = test.options;
        arguments.insert(arguments.end(), {"-o", "p", "x"});
        ATLAS_OPTIONS const options = options_of(arguments);
        std::string messages;
        auto const builder = build(options, sources, messages);
        EXPECT_EQ(messages, test.expected);
        EXPECT_EQ(sources[0]->page(), nullptr);
        EXPECT_EQ(builder->groups()[0].size(), 1U);
    }
}

TEST(atlas_pages, texels_that_get_lost) {
    struct CASE {
        PAGE_EXTENTS page;
        std::vector<PAGE_EXTENTS> sizes;
        char const* expected;
    };
    CASE const cases[] = {
        {{32, 16}, {{10, 10}, {3, 3}, {11, 5}}, "Warning: Texture 1 is covered by texture 2 in atlas p0.tga.\n"},
        {{40, 3}, {{20, 3}, {7, 3}}, "Warning: Texture 1 lies outside of atlas p0.tga.\n"},
        {{40, 3}, {{20, 3}, {10, 3}}, ""},
    };
    for (CASE const& test : cases) {
        TEXTURES sources;
        ATLAS_GROUP group;
        for (PAGE_EXTENTS const size : test.sizes) {
            sources.push_back(texture(std::to_string(sources.size()), static_cast<std::uint32_t>(size.width),
                                      static_cast<std::uint32_t>(size.height), D3D_FORMAT::l8));
            group.push_back(sources.back().get());
        }
        testing::internal::CaptureStderr();
        ATLAS_OPTIONS const options = options_of(
            {"-width", std::to_string(test.page.width), "-height", std::to_string(test.page.height), "-o", "p", "x"});
        testing::internal::GetCapturedStderr();
        testing::internal::CaptureStderr();
        ATLAS_BUILDER builder(options);
        builder.build_pages(group);
        builder.finalize_all();
        EXPECT_EQ(testing::internal::GetCapturedStderr(), test.expected);
    }
}

TEST(atlas_pages, no_page_without_sides) {
    TEXTURES sources;
    sources.push_back(texture("a", 4, 4, D3D_FORMAT::l8));
    testing::internal::CaptureStderr();
    ATLAS_OPTIONS const options = options_of({"-height", "0", "-o", "p", "x"});
    auto const page = TEXTURE_ATLAS_2D::create(options, *sources[0], 0);
    page->finalize();
    page->save("/nowhere/p0.tga");
    std::string const messages = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(messages.ends_with("*** Error: Unable to create atlas for texture a.\n"
                                   "*** Error: Unable to save atlas p0.tga.\n"))
        << messages;
}

TEST(atlas_pages, sizes_that_wrap_round_take_no_memory) {
    constexpr std::uint32_t most = 0xffffffff;
    // 2^31 x 2^31 texels of 32 bits and 2^62 bytes in four slices are nothing in 64 bits.
    EXPECT_THROW(PIXEL_BUFFER(D3D_FORMAT::a8r8g8b8, 1U << 31, 1U << 31, 1), std::bad_alloc);
    EXPECT_THROW(PIXEL_BUFFER(D3D_FORMAT::l8, 1U << 31, 1U << 31, 1, 4), std::bad_alloc);
    EXPECT_THROW(PIXEL_BUFFER(dxt1, most, most, 32, most), std::bad_alloc);
}

TEST(atlas_pages, files) {
    TEST_FOLDER folder;
    std::filesystem::path const base = folder.path("p").toStdString();
    std::string cause;
    auto const shown = [&](char const* name, std::uint32_t slice, std::size_t byte) {
        auto const picture = IMAGE_LOADER::load_picture(folder.path(name).toStdString(), 0, slice, cause);
        return picture ? static_cast<int>(picture->rgba.at(byte)) : -1;
    };
    TEXTURES sources;
    for (std::uint32_t i = 0; i < 3; ++i)
        sources.push_back(texture(std::to_string(i), 4, 4, D3D_FORMAT::a8r8g8b8, 1, marks(i)));
    std::string messages;
    ATLAS_OPTIONS const volume = options_of({"-volume", "-nomipmap", "-o", "p", "x"});
    build(volume, sources, messages)->save_all(base);
    auto const description = IMAGE_LOADER::describe(folder.path("p0.dds").toStdString(), cause);
    ASSERT_TRUE(description) << cause;
    EXPECT_EQ(description->format, "A8R8G8B8");
    EXPECT_TRUE(description->is_volume);
    EXPECT_EQ(description->depth, 4U);
    EXPECT_EQ(description->mips, 1U);
    EXPECT_EQ(shown("p0.dds", 2, 0), 2 * 64 + 2);  // red of the third slice's first texel
    EXPECT_EQ(shown("p0.dds", 3, 0), 0);

    sources.clear();
    sources.push_back(texture("a", 4, 2, D3D_FORMAT::a8r8g8b8, 1, marks(1)));
    ATLAS_OPTIONS const flat = options_of({"-width", "8", "-height", "8", "-o", "p", "x"});
    auto const builder = build(flat, sources, messages);
    builder->save_all(base);
    IMAGE_LOADER::IMAGE const targa = IMAGE_LOADER::load_image_file(folder.path("p0.tga").toStdString(), cause);
    ASSERT_TRUE(targa.valid()) << cause;
    EXPECT_EQ(std::pair(targa.width(), targa.height()), std::pair(4U, 2U));
    EXPECT_TRUE(std::ranges::equal(targa.level(0), builder->groups()[0][0]->texels()->slice(0, 0)));

    TEXTURE_ATLAS_CUBE cube("p1.dds", D3D_FORMAT::l8, 1, 8);
    EXPECT_EQ(cube.texel_count(), 6 * 64);
    EXPECT_FALSE(cube.insert(*sources[0]));
    cube.save(folder.path("c.dds").toStdString());
    EXPECT_EQ(IMAGE_LOADER::describe(folder.path("c.dds").toStdString(), cause)->faces, 6U) << cause;
}

/// Formats by number: which page kinds take them, and their bits.
TEST(atlas_pages, formats) {
    std::string lists[3];
    std::string bits;
    for (std::uint32_t number = 0; number < 130; ++number) {
        auto const format = static_cast<D3D_FORMAT>(number);
        bool const is_in[] = {is_2d_format(format), is_cube_format(format), is_volume_format(format)};
        for (std::size_t i = 0; i < 3; ++i)
            lists[i] += is_in[i] ? std::to_string(number) + ' ' : "";
        if (bits_per_texel(format) != 0)
            bits += std::to_string(number) + ':' + std::to_string(bits_per_texel(format)) + ' ';
    }
    EXPECT_EQ(lists[0],
              "20 21 22 23 24 25 26 27 28 29 30 31 32 33 34 35 36 40 41 50 51 52 60 61 62 63 64 67 81 110 111 "
              "112 113 114 115 116 117 ");
    EXPECT_EQ(lists[1], "21 22 23 24 25 26 34 50 51 63 64 81 ");
    EXPECT_EQ(lists[2], "21 22 23 24 25 26 34 50 51 64 81 ");
    EXPECT_EQ(bits, "20:24 21:32 22:32 23:16 24:16 25:16 26:16 27:8 28:8 29:16 30:16 31:32 32:32 33:32 34:32 35:32 "
                    "36:64 40:8 41:8 50:8 51:16 52:8 60:16 61:16 62:32 63:32 64:32 67:32 81:16 110:64 111:16 112:32 "
                    "113:64 114:32 115:64 116:128 117:16 ");
    EXPECT_EQ(bits_per_texel(four_cc_format("DXT1")), 4U);
    EXPECT_EQ(bits_per_texel(four_cc_format("DXT4")), 8U);
    EXPECT_EQ(bits_per_texel(four_cc_format("GRGB")), 16U);
    EXPECT_TRUE(is_2d_format(four_cc_format("DXT5")) && is_cube_format(four_cc_format("DXT2")));
}

TEST(atlas_pages, sources_grow_to_powers_of_two) {
    TEST_FOLDER folder;
    folder.write("a.tga", tga(3, 4, [](int x, int y) { return std::array{y, 8, x * 60, 255 - x}; }));
    std::string cause;
    auto const loaded = load_source_texture(folder.path("a.tga").toStdString(), true, cause);
    PIXEL_BUFFER const& texels = std::get<PIXEL_BUFFER>(loaded);
    EXPECT_EQ(std::pair(texels.width(), texels.height()), std::pair(4U, 4U));
    EXPECT_EQ(texels.levels(), 3U);
    EXPECT_EQ(texels.format(), D3D_FORMAT::a8b8g8r8);
    // Centres of the new columns lie at −1/8, 5/8, 11/8, 17/8 of the old ones; rows stay.
    std::vector<int> reds;
    for (std::size_t x = 0; x < 4; ++x) {
        reds.push_back(texels.slice(0, 0)[4 * x]);
        EXPECT_EQ(texels.slice(0, 0)[16 + 4 * x + 2], 1) << x;  // blue is the row
    }
    EXPECT_EQ(reds, (std::vector{0, 38, 83, 120}));  // 37.5, 82.5
    EXPECT_EQ(std::get<PIXEL_BUFFER>(load_source_texture(folder.path("a.tga").toStdString(), false, cause)).levels(),
              1U);
}

TEST(atlas_pages, sources_that_cannot_be_loaded) {
    TEST_FOLDER folder;
    folder.write("short.tga", tga(8, 8, [](int, int) { return std::array{1, 2, 3, 4}; }).left(60));
    folder.write("empty.tga", tga(0, 8, [](int, int) { return std::array{1, 2, 3, 4}; }));
    folder.write("wide.tga", tga(16385, 1, [](int, int) { return std::array{1, 2, 3, 4}; }));
    folder.write("text.png", "no image");
    TEXTURE_ATLAS_CUBE("", D3D_FORMAT::a8r8g8b8, 0, 4).save(folder.path("cube.dds").toStdString());
    for (char const* const name : {"short.tga", "empty.tga", "wide.tga", "text.png", "cube.dds", "none.tga"}) {
        SCOPED_TRACE(name);
        std::string cause;
        auto const loaded = load_source_texture(folder.path(name).toStdString(), true, cause);
        ASSERT_TRUE(std::holds_alternative<LOAD_FAILURE>(loaded));
        EXPECT_NE(cause, "");
        EXPECT_EQ(std::get<LOAD_FAILURE>(loaded) == LOAD_FAILURE::unsupported_format,
                  std::string_view(name) == "cube.dds");
    }
}

}  // namespace
