// The database as it is saved and read back, and what the reader makes of files that nobody saved so.
#include "platform/image_loader/image_info_db.hpp"
#include "platform/image_loader/image_info_db_reader.hpp"
#include "tests/platform/temporary_file.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <iterator>

namespace {

using namespace IMAGE_LOADER;
using BYTES = std::vector<std::byte>;
namespace layout = image_info_db_layout;

IMAGE_INFO info(std::uint32_t width, std::uint32_t height, std::uint32_t mips, TEXTURE_TEXEL_FORMAT format) {
    IMAGE_INFO result = IMAGE(width, height, mips, format, IMAGE_FORMAT::dds).get_image_info();
    return result;
}

/// wstring() asks the C locale, which may know no letters beyond ASCII.
QE::UniString wide(std::filesystem::path const& path) {
    std::u32string const text = path.u32string();
    return std::wstring(text.begin(), text.end());
}

BYTES saved(IMAGE_INFO_DB const& database) {
    platform_test::TEMPORARY_FILE const file(".bin");
    std::string cause;
    EXPECT_TRUE(database.save(wide(file.path()), cause)) << cause;
    std::ifstream in(file.path(), std::ios::binary);
    std::string const text((std::istreambuf_iterator<char>(in)), {});
    BYTES bytes(text.size());
    std::memcpy(bytes.data(), text.data(), text.size());
    return bytes;
}

BYTES small_database() {
    IMAGE_INFO_DB database;
    database.add_info(QE::FileName("textures/b.dds"), info(16, 8, 5, TTF_BC1), 0);
    database.add_info(QE::FileName("textures/a.dds"), info(16, 8, 5, TTF_BC1), 7);
    database.add_info(QE::FileName("z.dds"), info(3, 5, 1, TTF_R8G8B8A8), 0);
    return saved(database);
}

void put(BYTES& file, std::size_t at, std::uint32_t number) {
    std::memcpy(file.data() + at, &number, sizeof number);
}

void set_checksum(BYTES& file) {
    put(file, layout::checksum_offset, layout::crc_32(std::span(file).subspan(layout::checked_from)));
}

TEST(image_info_db, records_come_back_by_name) {
    BYTES const file = small_database();
    IMAGE_INFO_DB_READER reader;
    ASSERT_EQ(reader.open(file), nullptr);
    ASSERT_EQ(reader.size(), 3u);
    EXPECT_EQ(reader.image(0).name, "textures/a.dds");
    EXPECT_EQ(reader.image(0).user_number, 7u);
    auto const image = reader.find("textures/b.dds");
    ASSERT_TRUE(image);
    EXPECT_EQ(image->name, "textures/b.dds");
    EXPECT_EQ(image->name.data()[image->name.size()], '\0');
    EXPECT_EQ(image->width, 16u);
    EXPECT_EQ(image->height, 8u);
    EXPECT_EQ(image->texel_format, 9u);
    EXPECT_EQ(image->image_format, 3u);
    ASSERT_EQ(image->number_of_mips, 5u);
    // 16 x 8 in blocks of 8 bytes, then 8 x 4, and one block each.
    struct LEVEL {
        std::uint64_t offset, bytes, row_pitch;
    };
    LEVEL const levels[] = {{0, 64, 32}, {64, 16, 16}, {80, 8, 8}, {88, 8, 8}, {96, 8, 8}};
    for (std::uint32_t i = 0; i < 5; ++i) {
        IMAGE_SURFACE_RECORD const surface = reader.surface(*image, i);
        EXPECT_EQ(surface.offset, levels[i].offset);
        EXPECT_EQ(surface.bytes, levels[i].bytes);
        EXPECT_EQ(surface.row_pitch, levels[i].row_pitch);
    }
    for (char const* const name : {"", "a", "textures/", "textures/B.dds", "textures/b.dds ", "zz"})
        EXPECT_FALSE(reader.find(name)) << name;
    // Both images of one layout share its surfaces.
    EXPECT_EQ(file.size(), 64u + 3 * 40 + (5 + 1) * 24 + 15 + 15 + 6);
}

TEST(image_info_db, many_names_are_found_and_order_does_not_matter) {
    IMAGE_INFO_DB forwards;
    IMAGE_INFO_DB backwards;
    IMAGE_INFO const one = info(4, 4, 3, TTF_BC3);
    auto const name = [](int i) {
        return QE::FileName("t/" + std::to_string(i * 7919 % 1000) + ".dds");
    };
    for (int i = 0; i < 1000; ++i) {
        forwards.add_info(name(i), one, static_cast<std::uint32_t>(i * 7919 % 1000));
        backwards.add_info(name(999 - i), one, static_cast<std::uint32_t>((999 - i) * 7919 % 1000));
    }
    BYTES const file = saved(forwards);
    EXPECT_EQ(file, saved(backwards));
    IMAGE_INFO_DB_READER reader;
    ASSERT_EQ(reader.open(file), nullptr);
    for (std::uint32_t i = 0; i < 1000; ++i) {
        auto const image = reader.find("t/" + std::to_string(i) + ".dds");
        ASSERT_TRUE(image) << i;
        EXPECT_EQ(image->user_number, i);
    }
}

TEST(image_info_db, files_that_are_not_sound) {
    BYTES const sound = small_database();
    struct CASE {
        char const* cause;
        std::function<void(BYTES&)> spoil;
        bool with_checksum = true;
    };
    std::size_t const first = layout::header_bytes;
    CASE const cases[] = {
        {"this is no image-information database", [](BYTES& f) { f.resize(7); }, false},
        {"this is no image-information database",
         [](BYTES& f) {
             f[0] = std::byte{'z'};
         }},
        {"the file ends within its header",
         [](BYTES& f) {
             f.resize(63);
         }},
        {"the database is of another version",
         [](BYTES& f) {
             put(f, 8, 2);
         }},
        {"the file has another size than its header says",
         [](BYTES& f) {
             f.pop_back();
         }},
        {"the checksum is wrong", [](BYTES& f) { f[f.size() - 3] ^= std::byte{1}; }, false},
        {"the parts do not make up the file",
         [](BYTES& f) {
             put(f, 24, 0xFFFFFFFF);
         }},
        {"the parts do not make up the file",
         [](BYTES& f) {
             put(f, 28, 5);
         }},
        {"the parts do not make up the file",
         [](BYTES& f) {
             put(f, 36, 1);
         }},
        {"a name lies outside of the names",
         [=](BYTES& f) {
             put(f, first, 0xFFFFFFFF);
         }},
        {"a name lies outside of the names",
         [=](BYTES& f) {
             put(f, first + 4, 13);
         }},
        {"an image has surfaces outside of the surfaces",
         [=](BYTES& f) {
             put(f, first + 28, 2);
         }},
        {"an image has more mips than there are sizes",
         [=](BYTES& f) {
             put(f, first + 24, 33);
         }},
        {"the names are not sorted",
         [=](BYTES& f) {
             put(f, first + 40, 0);
         }},
    };
    for (CASE const& c : cases) {
        BYTES file = sound;
        c.spoil(file);
        if (c.with_checksum && file.size() > layout::checked_from)
            set_checksum(file);
        IMAGE_INFO_DB_READER reader;
        EXPECT_STREQ(reader.open(file), c.cause);
        EXPECT_EQ(reader.size(), 0u);
        EXPECT_FALSE(reader.find("z.dds"));
    }
    for (std::size_t const length : {layout::most_name_bytes, layout::most_name_bytes + 1}) {
        IMAGE_INFO_DB database;
        database.add_info(QE::FileName(std::string(length, 'a')), info(4, 4, 1, TTF_BC1), 0);
        EXPECT_STREQ(IMAGE_INFO_DB_READER().open(saved(database)),
                     length > layout::most_name_bytes ? "a name is longer than any path" : nullptr);
    }
    // The checksum is the one of PNG and zlib.
    std::string_view const digits = "123456789";
    EXPECT_EQ(layout::crc_32(std::as_bytes(std::span(digits))), 0xCBF43926u);
}

TEST(image_info_db, failed_save_leaves_the_file) {
    std::vector<std::uint8_t> const before = {1, 2, 3};
    platform_test::TEMPORARY_FILE const file(".bin", before);
    IMAGE_INFO_DB database;
    database.add_info(QE::FileName("a.dds"), info(4, 4, 1, TTF_BC1), 0);
    std::string cause;
    EXPECT_FALSE(database.save(wide(file.path() / "x.bin"), cause));
    EXPECT_EQ(cause, "Not a directory");
    EXPECT_EQ(std::filesystem::file_size(file.path()), 3u);
}

}  // namespace
