// The image itself: wrapping, laying out, owning, and what it takes from DDS files.
#include "platform/image_loader/image.hpp"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace {

using namespace IMAGE_LOADER;
using dds_container::DDS_DESCRIPTION;
using dds_container::DXGI;
using dds_container::HEADER_KIND;
using BYTES = std::vector<std::uint8_t>;

BYTES dds(DDS_DESCRIPTION const& description, std::vector<BYTES> const& levels) {
    std::vector<std::span<std::uint8_t const>> const surfaces(levels.begin(), levels.end());
    std::string cause;
    auto const file = dds_container::write_dds(description, surfaces, cause);
    EXPECT_TRUE(file) << cause;
    return file.value_or(BYTES());
}

DDS_DESCRIPTION description(std::uint32_t side, std::uint32_t levels, DXGI format) {
    DDS_DESCRIPTION d;
    d.width = d.height = side;
    d.mip_count = levels;
    d.format = format;
    return d;
}

TEST(image_numbers, are_those_that_other_programs_know) {
    struct CASE {
        DXGI dxgi;
        std::uint32_t number;
    };
    static CASE const cases[] = {
        {DXGI::bc1_unorm, 9},       {DXGI::bc1_unorm_srgb, 12}, {DXGI::bc5_unorm, 44}, {DXGI::bc5_snorm, 45},
        {DXGI::bc6h_uf16, 46},      {DXGI::bc6h_sf16, 47},      {DXGI::bc7_unorm, 48}, {DXGI::bc7_unorm_srgb, 49},
        {DXGI::r8g8b8a8_unorm, 51}, {DXGI::b8g8r8a8_unorm, 52},
    };
    for (CASE const& c : cases) {
        EXPECT_EQ(texel_format_of(description(4, 1, c.dxgi)), c.number);
    }
    EXPECT_EQ(static_cast<int>(IMAGE_FORMAT::png), 2);
    EXPECT_EQ(static_cast<int>(IMAGE_FORMAT::dds), 3);
    EXPECT_EQ(static_cast<int>(IMAGE_FORMAT::memory), 9);
    // Every format that the container reads can be read as texels too.
    for (std::uint32_t number = 0; number < 200; ++number) {
        DXGI const format = dds_container::dxgi_from_number(number);
        if (format != DXGI::unknown) {
            DDS_DESCRIPTION const d = description(4, 1, format);
            auto const& row = texel_format_info(texel_format_of(d));
            auto const& info = dds_container::dxgi_format_info(format);
            EXPECT_EQ(row.bytes_per_texel, info.bytes_per_texel) << info.name;
            EXPECT_EQ(row.kind == TEXEL_KIND::block, info.bytes_per_block != 0) << info.name;
        }
    }
}

TEST(image_from_dds, keeps_levels_and_blocks) {
    BYTES blocks(32);
    std::iota(blocks.begin(), blocks.end(), std::uint8_t{0});
    IMAGE const image(dds(description(8, 3, DXGI::bc1_unorm), {blocks, BYTES(8, 77), BYTES(8, 78)}));
    ASSERT_TRUE(image.valid()) << image.cause();
    EXPECT_EQ(image.image_format(), IMAGE_FORMAT::dds);
    EXPECT_EQ(image.texel_format(), TTF_BC1);
    EXPECT_EQ(image.number_of_mips(), 3u);
    EXPECT_EQ(BYTES(image.level(0).begin(), image.level(0).end()), blocks);
    EXPECT_EQ(image.get_image_info().surfaces[0].row_pitch, 16u);
    EXPECT_EQ(image.get_image_info().surfaces[2].offset, 40u);
    EXPECT_EQ(image.level(2)[7], 78);
    EXPECT_TRUE(image.level(3).empty());
}

TEST(image_from_dds, turns_unusual_masks_into_blue_green_red_alpha) {
    DDS_DESCRIPTION d = description(1, 1, DXGI::unknown);
    d.masks = {24, 0x0000ff, 0x00ff00, 0xff0000, 0};
    IMAGE const image(dds(d, {{1, 2, 3}}));
    ASSERT_TRUE(image.valid()) << image.cause();
    EXPECT_EQ(image.texel_format(), TTF_B8G8R8A8);
    EXPECT_EQ(BYTES(image.level(0).begin(), image.level(0).end()), (BYTES{3, 2, 1, 255}));
}

TEST(image_from_dds, takes_single_pictures_only_but_reads_all_headers) {
    DDS_DESCRIPTION cube = description(4, 1, DXGI::bc1_unorm);
    cube.is_cube = true;
    cube.face_count = 6;
    DDS_DESCRIPTION volume = description(1, 1, DXGI::r16g16b16a16_float);
    volume.is_volume = true;
    volume.depth = 2;
    DDS_DESCRIPTION array = description(4, 1, DXGI::bc7_unorm);
    array.header_kind = HEADER_KIND::dx10;
    array.array_size = 2;
    struct CASE {
        BYTES file;
        char const* cause;
        TEXTURE_TEXEL_FORMAT format;
    };
    static CASE const cases[] = {
        {dds(cube, std::vector<BYTES>(6, BYTES(8))), "a cube map: only two-dimensional images can be converted",
         TTF_BC1},
        {dds(volume, {BYTES(16)}), "a volume: only two-dimensional images can be converted", TTF_R16G16B16A16_FLOAT},
        {dds(array, std::vector<BYTES>(2, BYTES(16))), "an array: only two-dimensional images can be converted",
         TTF_BC7},
    };
    for (CASE const& c : cases) {
        EXPECT_EQ(IMAGE(c.file).cause(), c.cause);
        std::size_t const enough = std::min(c.file.size(), IMAGE::longest_header);
        IMAGE const header = IMAGE::read_header(std::span(c.file).first(enough));
        ASSERT_TRUE(header.valid()) << header.cause();
        EXPECT_EQ(header.texel_format(), c.format);
        EXPECT_EQ(header.image_format(), IMAGE_FORMAT::dds);
        EXPECT_TRUE(header.level(0).empty());
    }
    BYTES small = dds(description(1, 1, DXGI::r8_unorm), {{1}});
    EXPECT_TRUE(IMAGE::read_header(small).valid()) << "a file shorter than the longest header";
    small.resize(127);
    EXPECT_EQ(IMAGE::read_header(small).cause(), "the file ends after 127 of the 128 bytes of its DDS header");
}

TEST(image_from_dds, places_of_levels_behind_a_header) {
    // "offset bytes pitch" of three levels of 8 x 8 texels.
    struct CASE {
        DXGI format;
        std::size_t picture;
        std::uint8_t depth;
        bool is_cube;
        char const* places;
    };
    static CASE const cases[] = {
        {DXGI::b8g8r8a8_unorm, 256, 0, false, "0 256 32|256 64 16|320 16 8|"},
        {DXGI::b8g8r8a8_unorm, 256, 0, true, "0 256 32|256 64 16|320 16 8|"},
        {DXGI::b8g8r8a8_unorm, 256, 8, false, "0 256 32|2048 64 16|2304 16 8|"},
        {DXGI::bc1_unorm, 32, 3, false, "0 32 16|96 8 8|104 8 8|"},
        {DXGI::bc3_unorm, 64, 0, true, "0 64 32|64 16 16|80 16 16|"},
        // A layout without a number: 24 bits, red first.
        {DXGI::unknown, 192, 2, false, "0 192 24|384 48 12|432 12 6|"},
    };
    for (CASE const& c : cases) {
        DDS_DESCRIPTION d = description(8, 1, c.format);
        d.masks = {24, 0x0000ff, 0x00ff00, 0xff0000, 0};
        BYTES file = dds(d, {BYTES(c.picture)});
        file[24] = c.depth;
        file[28] = 3;
        file[113] = c.is_cube ? 0xfe : 0;
        file[114] = c.depth > 0 ? 0x20 : 0;
        IMAGE const header = IMAGE::read_header(file);
        std::string places;
        for (IMAGE_SURFACE const& surface : header.get_image_info().surfaces)
            places += std::to_string(surface.offset) + ' ' + std::to_string(surface.bytes) + ' ' +
                      std::to_string(surface.row_pitch) + '|';
        EXPECT_EQ(places, c.places);
    }
}

TEST(image, wraps_without_copying_and_checks_what_it_wraps) {
    BYTES texels(64);
    auto const info = [&](std::uint64_t pitch, std::uint64_t bytes) {
        return IMAGE_INFO{2, 4, TTF_B8G8R8A8, IMAGE_FORMAT::memory, 1, {{texels.data(), pitch, bytes, 0}}};
    };
    auto const before = image_allocation_statistics().current_bytes;
    IMAGE image(info(8, 0));
    ASSERT_TRUE(image.valid()) << image.cause();
    EXPECT_EQ(image.level(0).data(), texels.data());
    EXPECT_EQ(image.level(0).size(), 32u);
    EXPECT_EQ(image_allocation_statistics().current_bytes, before);
    EXPECT_TRUE(IMAGE(info(16, 56)).valid()) << "the last row needs no padding";
    EXPECT_FALSE(IMAGE(info(16, 55)).valid());
    EXPECT_FALSE(IMAGE(info(7, 64)).valid());
    EXPECT_FALSE(IMAGE(info(0, 0)).valid());
    IMAGE_INFO empty = info(8, 0);
    empty.width = 0;
    EXPECT_EQ(IMAGE(empty).cause(), "an image of 0 x 4 texels is empty");
    IMAGE_INFO unknown = info(8, 0);
    unknown.texel_format = TTF_NUM_FORMATS;
    EXPECT_FALSE(IMAGE(unknown).valid());
}

TEST(image, lays_a_chain_on_a_buffer_that_is_large_enough) {
    BYTES buffer(64 + 16 + 4);
    IMAGE const image(buffer, 4, 4, 3, TTF_B8G8R8A8);
    ASSERT_TRUE(image.valid()) << image.cause();
    EXPECT_EQ(image.level(2).data(), buffer.data() + 80);
    // Half as much again as the top level is not enough for a thin image.
    EXPECT_EQ(chain_bytes(TTF_B8G8R8A8, 1, 64, 7), 4u * 127);
    BYTES thin(4 * 96);
    EXPECT_EQ(IMAGE(thin, 1, 64, 7, TTF_B8G8R8A8).cause(), "a buffer of 384 bytes for an image of 508 bytes");
    EXPECT_EQ(IMAGE(thin, 4, 4, 4, TTF_B8G8R8A8).cause(), "an image of 4 x 4 texels cannot have 4 mip levels");
    EXPECT_EQ(IMAGE(thin, 65536, 65536, 1, TTF_B8G8R8A8).cause(), "an image of 65536 x 65536 texels is too large");
}

TEST(image, moves_its_memory_and_counts_it_once) {
    auto const before = image_allocation_statistics().current_bytes;
    {
        IMAGE first(8, 8, 1, TTF_B8G8R8A8);
        first.level(0)[5] = 55;
        IMAGE second(std::move(first));
        EXPECT_FALSE(first.valid());
        EXPECT_TRUE(first.level(0).empty());
        EXPECT_EQ(second.level(0)[5], 55);
        IMAGE third(16, 16, 1, TTF_B8G8R8A8);
        third = std::move(second);
        EXPECT_EQ(third.level(0)[5], 55);
        EXPECT_EQ(image_allocation_statistics().current_bytes, before + 256);
    }
    EXPECT_EQ(image_allocation_statistics().current_bytes, before);
}

}  // namespace
