// TGA files, byte by byte, and what the reader makes of them.
#include "platform/qe/read_pixels.hpp"

#include "platform/image_loader/image_memory.hpp"
#include "tests/platform/temporary_file.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace {

using BYTES = std::vector<std::uint8_t>;
using platform_test::TEMPORARY_FILE;

constexpr std::uint8_t top = 0x20;
constexpr std::uint8_t right = 0x10;

struct MAP {
    std::uint8_t type = 0;
    std::uint16_t first = 0;
    std::uint16_t count = 0;
    std::uint8_t bits = 0;
};

BYTES tga(std::uint8_t type, std::uint16_t width, std::uint16_t height, std::uint8_t bits, std::uint8_t descriptor,
          BYTES const& rest, MAP map = {}, std::uint8_t id_length = 0) {
    auto const low = [](int value) {
        return static_cast<std::uint8_t>(value);
    };
    auto const high = [](int value) {
        return static_cast<std::uint8_t>(value >> 8);
    };
    BYTES file = {id_length,
                  map.type,
                  type,
                  low(map.first),
                  high(map.first),
                  low(map.count),
                  high(map.count),
                  map.bits,
                  0,
                  0,
                  0,
                  0,
                  low(width),
                  high(width),
                  low(height),
                  high(height),
                  bits,
                  descriptor};
    file.insert(file.end(), rest.begin(), rest.end());
    return file;
}

QE::FileIn open(TEMPORARY_FILE const& file) {
    return QE::FileIn(QE::String(file.path().string()));
}

TEST(tga, reads_every_coding) {
    struct CASE {
        char const* name;
        BYTES file;
        std::uint32_t width;
        std::uint32_t height;
        BYTES texels;
    };
    static CASE const cases[] = {
        {"24 bits", tga(2, 2, 1, 24, top, {1, 2, 3, 4, 5, 6}), 2, 1, {1, 2, 3, 255, 4, 5, 6, 255}},
        {"bottom row first", tga(2, 1, 2, 24, 0, {1, 2, 3, 4, 5, 6}), 1, 2, {4, 5, 6, 255, 1, 2, 3, 255}},
        {"right texel first",
         tga(3, 3, 1, 8, top | right, {1, 2, 3}),
         3,
         1,
         {3, 3, 3, 255, 2, 2, 2, 255, 1, 1, 1, 255}},
        {"right texel and bottom row first",
         tga(3, 2, 2, 8, right, {1, 2, 3, 4}),
         2,
         2,
         {4, 4, 4, 255, 3, 3, 3, 255, 2, 2, 2, 255, 1, 1, 1, 255}},
        {"32 bits that announce alpha", tga(2, 1, 1, 32, top | 8, {1, 2, 3, 4}), 1, 1, {1, 2, 3, 4}},
        {"32 bits that announce none", tga(2, 1, 1, 32, top, {1, 2, 3, 4}), 1, 1, {1, 2, 3, 4}},
        // Red 31, green 16, blue 1.
        {"16 bits, top bit set", tga(2, 1, 1, 16, top | 1, {0x01, 0xfe}), 1, 1, {8, 132, 255, 255}},
        {"16 bits, top bit clear", tga(2, 1, 1, 16, top | 1, {0x01, 0x7e}), 1, 1, {8, 132, 255, 0}},
        {"16 bits that announce no alpha", tga(2, 1, 1, 16, top, {0x01, 0x7e}), 1, 1, {8, 132, 255, 255}},
        {"15 bits", tga(2, 1, 1, 15, top | 1, {0x01, 0x7e}), 1, 1, {8, 132, 255, 255}},
        {"grey and alpha", tga(3, 1, 1, 16, top, {7, 9}), 1, 1, {7, 7, 7, 9}},
        {"map of 24 bits that starts at 5",
         tga(1, 2, 1, 8, top, {10, 11, 12, 20, 21, 22, 6, 5}, {1, 5, 2, 24}),
         2,
         1,
         {20, 21, 22, 255, 10, 11, 12, 255}},
        {"map of 32 bits, 16-bit indices",
         tga(1, 1, 1, 16, top, {1, 2, 3, 4, 0x2c, 0x01}, {1, 300, 1, 32}),
         1,
         1,
         {1, 2, 3, 4}},
        {"map of 16 bits with alpha", tga(1, 1, 1, 8, top | 1, {0x00, 0x7c, 0}, {1, 0, 1, 16}), 1, 1, {0, 0, 255, 0}},
        {"map of 15 bits", tga(1, 1, 1, 8, top, {0x00, 0x7c, 0}, {1, 0, 1, 15}), 1, 1, {0, 0, 255, 255}},
        {"a map that is not used, and an id",
         tga(2, 1, 1, 24, top, {'i', 'd', 9, 9, 9, 1, 2, 3}, {1, 0, 1, 24}, 2),
         1,
         1,
         {1, 2, 3, 255}},
        {"no map, but its fields filled", tga(2, 1, 1, 24, top, {1, 2, 3}, {0, 7, 7, 7}), 1, 1, {1, 2, 3, 255}},
        {"a run over two rows, then a literal",
         tga(10, 2, 2, 24, 0, {0x82, 1, 2, 3, 0x00, 4, 5, 6}),
         2,
         2,
         {1, 2, 3, 255, 4, 5, 6, 255, 1, 2, 3, 255, 1, 2, 3, 255}},
        {"literals over three rows",
         tga(11, 1, 3, 8, top, {0x02, 1, 2, 3}),
         1,
         3,
         {1, 1, 1, 255, 2, 2, 2, 255, 3, 3, 3, 255}},
        {"run-length, 32 bits",
         tga(10, 3, 1, 32, top, {0x81, 1, 2, 3, 4, 0x00, 5, 6, 7, 8}),
         3,
         1,
         {1, 2, 3, 4, 1, 2, 3, 4, 5, 6, 7, 8}},
        {"run-length, indices",
         tga(9, 3, 1, 8, top, {1, 2, 3, 4, 5, 6, 0x81, 1, 0x00, 0}, {1, 0, 2, 24}),
         3,
         1,
         {4, 5, 6, 255, 4, 5, 6, 255, 1, 2, 3, 255}},
        {"a last run longer than the image", tga(11, 1, 1, 8, top, {0xff, 5}), 1, 1, {5, 5, 5, 255}},
        {"bytes behind the texels", tga(3, 1, 1, 8, top, {5, 9, 9, 9}), 1, 1, {5, 5, 5, 255}},
        {"no texels", tga(2, 0, 4, 24, top, {}), 0, 4, {}},
    };
    for (CASE const& c : cases) {
        SCOPED_TRACE(c.name);
        TEMPORARY_FILE const file(".tga", c.file);
        QE::FileIn in = open(file);
        QE::TGAHeader header;
        ASSERT_TRUE(header.read(in)) << header.cause();
        std::string cause;
        auto const image = QE::read_pixels(in, header, cause);
        ASSERT_TRUE(image) << cause;
        EXPECT_EQ(image->width, c.width);
        EXPECT_EQ(image->height, c.height);
        EXPECT_EQ(BYTES(image->pixels.begin(), image->pixels.end()), c.texels);
    }
}

TEST(tga, refuses_headers_and_goes_back) {
    struct CASE {
        BYTES file;
        char const* cause;
    };
    static CASE const cases[] = {
        {BYTES(17, 0), "the file has 17 bytes, too few for a TGA header"},
        {tga(0, 1, 1, 24, top, {1, 2, 3}), "TGA image type 0 is not supported"},
        {tga(32, 1, 1, 24, top, {1, 2, 3}), "TGA image type 32 is not supported"},
        {tga(2, 1, 1, 0, top, {1, 2, 3}), "TGA image type 2 with 0 bits a texel is not supported"},
        {tga(2, 1, 1, 255, top, {1, 2, 3}), "TGA image type 2 with 255 bits a texel is not supported"},
        {tga(11, 1, 1, 24, top, {1, 2, 3}), "TGA image type 11 with 24 bits a texel is not supported"},
        {tga(2, 1, 1, 24, top | 0x40, {1, 2, 3}), "interleaved TGA rows are not supported"},
        {tga(2, 1, 1, 24, top, {1, 2, 3}, {2}), "TGA colour map type 2 is not supported"},
        {tga(1, 1, 1, 8, top, {1, 2, 3}, {1, 0, 1, 12}), "TGA colour map entries of 12 bits are not supported"},
        {tga(1, 1, 1, 8, top, {1, 2, 3}), "the TGA header announces texels that index a colour map, and no colour map"},
    };
    for (CASE const& c : cases) {
        SCOPED_TRACE(c.cause);
        BYTES shifted = {0xaa};
        shifted.insert(shifted.end(), c.file.begin(), c.file.end());
        TEMPORARY_FILE const file(".tga", shifted);
        QE::FileIn in = open(file);
        ASSERT_TRUE(in.seek(1));
        QE::TGAHeader header;
        EXPECT_FALSE(header.read(in));
        EXPECT_EQ(header.cause(), c.cause);
        EXPECT_EQ(in.position(), 1u);
        EXPECT_EQ(static_cast<int>(header.format()), 21);
        std::string cause;
        EXPECT_FALSE(QE::read_pixels(in, header, cause));
        EXPECT_EQ(cause, c.cause);
    }
}

TEST(tga, refuses_texels_before_taking_memory) {
    struct CASE {
        BYTES file;
        char const* cause;
    };
    BYTES const many_runs(4194560, 0xff);
    static CASE const cases[] = {
        {tga(2, 65535, 65535, 32, top, BYTES(10)),
         "the header announces 65535 x 65535 texels of 32 bits (17179344900 bytes), but only 10 bytes follow"},
        {tga(2, 2, 1, 24, top, BYTES(5)),
         "the header announces 2 x 1 texels of 24 bits (6 bytes), but only 5 bytes follow"},
        {tga(10, 200, 2, 24, top, BYTES(15)),
         "the header announces 200 x 2 texels of 24 bits (1200 bytes), which take at least 16 bytes run-length coded, "
         "but only 15 bytes follow"},
        {tga(11, 16385, 16384, 8, top, many_runs),
         "the header announces 16385 x 16384 texels of 8 bits (268451840 bytes), more than the 268435456 texels that "
         "an image may have"},
        {tga(2, 1, 1, 24, top, BYTES(3), {}, 4), "the file ends within the image id"},
        {tga(1, 1, 1, 8, top, BYTES(5), {1, 0, 2, 24}), "the colour map of 6 bytes is cut short"},
    };
    for (CASE const& c : cases) {
        SCOPED_TRACE(c.cause);
        TEMPORARY_FILE const file(".tga", c.file);
        QE::FileIn in = open(file);
        QE::TGAHeader header;
        ASSERT_TRUE(header.read(in));
        std::uint64_t const before = IMAGE_LOADER::image_allocation_statistics().high_water_bytes;
        std::string cause;
        EXPECT_FALSE(QE::read_pixels(in, header, cause));
        EXPECT_EQ(cause, c.cause);
        EXPECT_EQ(in.position(), QE::TGAHeader::byte_count);
        EXPECT_EQ(IMAGE_LOADER::image_allocation_statistics().high_water_bytes, before);
    }
}

TEST(tga, refuses_damaged_texels) {
    struct CASE {
        BYTES file;
        char const* cause;
    };
    static CASE const cases[] = {
        {tga(11, 2, 2, 8, top, {0x80, 1, 0x80, 1, 0x80}),
         "the header announces 2 x 2 texels of 8 bits (4 bytes), but its texels end in row 1"},
        {tga(10, 2, 2, 24, top, {0x03, 1, 2, 3, 4, 5, 6, 7, 8, 9}),
         "the header announces 2 x 2 texels of 24 bits (12 bytes), but its texels end in row 1"},
        {tga(1, 1, 1, 8, top, {1, 2, 3, 4}, {1, 5, 1, 24}),
         "a texel names entry 4 of the colour map, which has the entries 5 to 5"},
        {tga(1, 1, 1, 8, top, {1, 2, 3, 6}, {1, 5, 1, 24}),
         "a texel names entry 6 of the colour map, which has the entries 5 to 5"},
    };
    for (CASE const& c : cases) {
        SCOPED_TRACE(c.cause);
        TEMPORARY_FILE const file(".tga", c.file);
        QE::FileIn in = open(file);
        QE::TGAHeader header;
        ASSERT_TRUE(header.read(in));
        std::string cause;
        EXPECT_FALSE(QE::read_pixels(in, header, cause));
        EXPECT_EQ(cause, c.cause);
    }
}

TEST(tga, counts_its_memory_while_the_image_lives) {
    TEMPORARY_FILE const file(".tga", tga(3, 100, 10, 8, top, BYTES(1000)));
    QE::FileIn in = open(file);
    QE::TGAHeader header;
    ASSERT_TRUE(header.read(in));
    std::string cause;
    std::uint64_t const before = IMAGE_LOADER::image_allocation_statistics().current_bytes;
    {
        auto const image = QE::read_pixels(in, header, cause);
        auto const during = IMAGE_LOADER::image_allocation_statistics();
        EXPECT_EQ(during.current_bytes, before + 4000);
        EXPECT_GE(during.high_water_bytes, during.current_bytes);
    }
    EXPECT_EQ(IMAGE_LOADER::image_allocation_statistics().current_bytes, before);
}

TEST(file_in, reads_all_or_nothing) {
    TEMPORARY_FILE const file(".bin", BYTES{1, 2, 3, 4});
    QE::FileIn in = open(file);
    ASSERT_TRUE(in.is_open());
    EXPECT_EQ(in.size(), 4u);
    BYTES three(3);
    EXPECT_TRUE(in.read(three));
    EXPECT_EQ(three, (BYTES{1, 2, 3}));
    EXPECT_FALSE(in.read(three));
    EXPECT_EQ(in.position(), 3u);
    EXPECT_FALSE(in.seek(5));
    EXPECT_TRUE(in.seek(4));
    EXPECT_TRUE(in.seek(1));
    EXPECT_TRUE(in.read(three));
    EXPECT_EQ(three, (BYTES{2, 3, 4}));
    EXPECT_FALSE(QE::FileIn(QE::String(std::filesystem::temp_directory_path().string())).is_open());
    EXPECT_FALSE(QE::FileIn(QE::String("/no/such/file")).is_open());
}

}  // namespace
