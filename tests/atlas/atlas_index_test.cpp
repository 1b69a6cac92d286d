// The index, byte by byte.
#include "atlas/atlas_index.hpp"
#include "atlas/texture_atlas_cube.hpp"
#include "tests/atlas/textures.hpp"

#include <gtest/gtest.h>

namespace {

/// The lines behind the header for sources that were built with these options into "out/p<i>".
std::string lines(TEXTURES const& sources, std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"-o", "out/p", "source"});
    testing::internal::CaptureStderr();
    ATLAS_OPTIONS const options = options_of(arguments);
    ATLAS_BUILDER builder(options);
    auto const groups = group_by_format(sources);
    for (auto const& [format, group] : groups)
        builder.build_pages(group);
    builder.finalize_all();
    std::string const text = atlas_index_text(groups, "p", options.is_set(ATLAS_OPTION::half_texel));
    testing::internal::GetCapturedStderr();
    return text.substr(text.find("\n\n") + 2);
}

TEST(atlas_index, header_and_a_line) {
    TEXTURES sources;
    sources.push_back(texture("x/a.tga", 256, 256, D3D_FORMAT::a8b8g8r8));
    sources.push_back(texture("x\\b/stone.png", 256, 256, D3D_FORMAT::a8b8g8r8));
    ATLAS_OPTIONS const options = options_of({"-width", "512", "-height", "256", "-o", "out/atlas", "source"});
    ATLAS_BUILDER builder(options);
    auto const groups = group_by_format(sources);
    builder.build_pages(groups.begin()->second);
    builder.finalize_all();
    EXPECT_EQ(atlas_index_text(groups, "atlas", false),
              "# atlas.tai\n"
              "# Created with ZAB\n"
              "#\n"
              "# <filename>\t\t<atlas filename>, <atlas idx>, <atlas type>, <woffset>, <hoffset>, <depth offset>, "
              "<width>, <height>\n"
              "#\n"
              "# Texture <filename> can be found in texture atlas <atlas filename>, i.e., \n"
              "# atlas<idx>.dds of <atlas type> type with texture coordinates boundary given by:\n"
              "#   A = ( <woffset>, <hoffset> )\n"
              "#   B = ( <woffset> + <width>, <hoffset> + <height> )\n"
              "#\n"
              "# where coordinates (0,0) and (1,1) of the original texture map correspond\n"
              "# to coordinates A and B, respectively, in the texture atlas.\n"
              "# If the atlas is a volume texture then <depth offset> is the w-coordinate\n"
              "# to use the access the appropriate slice in the volume atlas.\n"
              "\n"
              "a.tga\t\tatlas0.dds, 0, 2D, 0.000000, 0.000000, 0.000000, 0.500000, 1.000000\n"
              "stone.png\t\tatlas0.dds, 0, 2D, 0.500000, 0.000000, 0.000000, 0.500000, 1.000000\n");
}

TEST(atlas_index, lines) {
    struct SOURCE {
        char const* name;
        std::uint32_t width;
        std::uint32_t height;
        D3D_FORMAT format = D3D_FORMAT::a8r8g8b8;
    };
    struct CASE {
        char const* what;
        std::vector<SOURCE> sources;
        std::vector<std::string> arguments;
        char const* expected;
    };
    CASE const cases[] = {
        {"half a texel of a page 256 wide",
         {{"a", 128, 128}, {"b", 128, 128}},
         {"-width", "256", "-halftexel"},
         "a\t\tp0.dds, 0, 2D, 0.001953, 0.003906, 0.000000, 0.496094, 0.992188\n"
         "b\t\tp0.dds, 0, 2D, 0.501953, 0.003906, 0.000000, 0.496094, 0.992188\n"},
        {"not placed: the source stands for itself",
         {{"x/b", 64, 4}, {"a", 16, 8}},
         {"-width", "32", "-halftexel"},
         "b\t\tb, -1, 2D, 0.007812, 0.125000, 0.000000, 0.984375, 0.750000\n"
         "a\t\tp0.dds, 0, 2D, 0.031250, 0.062500, 0.000000, 0.937500, 0.875000\n"},
        {"a second page, and numbers that begin again with the next format",
         {{"a", 8, 8, D3D_FORMAT::l8}, {"b", 8, 8}, {"c", 8, 8}},
         {"-width", "8", "-height", "8"},
         "b\t\tp0.dds, 0, 2D, 0.000000, 0.000000, 0.000000, 1.000000, 1.000000\n"
         "c\t\tp1.dds, 1, 2D, 0.000000, 0.000000, 0.000000, 1.000000, 1.000000\n"
         "a\t\tp0.dds, 0, 2D, 0.000000, 0.000000, 0.000000, 1.000000, 1.000000\n"},
        {"a volume of three slices is saved with four; one of a single slice is plain",
         {{"a", 8, 8}, {"b", 8, 8}, {"c", 8, 8}, {"d", 8, 4}},
         {"-volume", "-nomipmap"},
         "a\t\tp0.dds, 0, Volume, 0.000000, 0.000000, 0.125000, 1.000000, 1.000000\n"
         "b\t\tp0.dds, 0, Volume, 0.000000, 0.000000, 0.375000, 1.000000, 1.000000\n"
         "c\t\tp0.dds, 0, Volume, 0.000000, 0.000000, 0.625000, 1.000000, 1.000000\n"
         "d\t\tp1.dds, 1, 2D, 0.000000, 0.000000, 0.000000, 1.000000, 1.000000\n"},
    };
    for (CASE const& test : cases) {
        SCOPED_TRACE(test.what);
        TEXTURES sources;
        for (SOURCE const& source : test.sources)
            sources.push_back(texture(source.name, source.width, source.height, source.format));
        EXPECT_EQ(lines(sources, test.arguments), test.expected);
    }
}

TEST(atlas_index, a_cube_page) {
    TEXTURES sources;
    sources.push_back(texture("face", 4, 4, D3D_FORMAT::a8r8g8b8));
    TEXTURE_ATLAS_CUBE const cube("out/c0.dds", D3D_FORMAT::a8r8g8b8, 0, 4);
    sources[0]->set_place(cube, {0, 0, 4, 4, 2});
    std::string const text = atlas_index_text(group_by_format(sources), "c", false);
    EXPECT_TRUE(text.ends_with("face\t\tc0.dds, 0, Cube, 0.000000, 0.000000, 2.000000, 1.000000, 1.000000\n")) << text;
}

}  // namespace
