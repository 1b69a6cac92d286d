// Sizes as people write them, and the sizes that images' headers announce.
#include "host/tool/machine_limits.hpp"
#include "host/tool/memory_estimate.hpp"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <thread>

namespace {

using namespace tool;

TEST(machine_limits, sizes_as_people_write_them) {
    struct CASE {
        char const* text;
        std::optional<std::uint64_t> bytes;
    };
    for (CASE const& given :
         {CASE{"1", 1}, CASE{"800M", 800ULL << 20}, CASE{"1.5g", 3ULL << 29}, CASE{"2T", 2ULL << 40},
          CASE{"64K", 65536}, CASE{"", {}}, CASE{"G", {}}, CASE{"0", {}}, CASE{"-1", {}}, CASE{"1GB", {}},
          CASE{"4Q", {}}, CASE{"nan", {}}, CASE{"inf", {}}, CASE{"1e3", {}}, CASE{"99999999T", {}}, CASE{" 1", {}}})
        EXPECT_EQ(parse_size(given.text), given.bytes) << given.text;
}

TEST(machine_limits, something_is_always_available) {
    EXPECT_GE(available_processors(), 1);
    EXPECT_LE(available_processors(), static_cast<int>(std::max(1U, std::thread::hardware_concurrency())));
    EXPECT_GT(available_memory().value_or(1), 0U);
}

// Each header by hand after the published layouts, 640 x 480; none is followed by texels.
TEST(memory_estimate, texels_as_headers_announce_them) {
    auto const hex = [](char const* text) {
        return QByteArray::fromHex(text);
    };
    QByteArray const tga = hex("000002 0000000000 00000000 8002 e001 20 08");
    QByteArray const png = hex("89504e470d0a1a0a 0000000d 49484452 00000280 000001e0 0806000000");
    // A comment segment, a filling byte, a table of the C4 kind (which is no frame), then a progressive frame.
    QByteArray const jpg = hex("ffd8 fffe0004ffc0 ff ffc4000400c0 ffc2000b08 01e0 0280 01 011100");
    QByteArray const tif =
        hex("49492a00 08000000 0300 00010300010000008002 0000 010104000100 0000e0010000 0201030001000000"
            "08000000 00000000");
    QByteArray const big_tif =
        hex("4d4d002a 00000008 0002 010000030000000102800000 010100040000000 1000001e0 00000000");
    // Offsets of 64 bits.
    QByteArray wide_tif =
        hex("4d4d002b 00080000 0000000000000010 0000000000000002 0100 0003 0000000000000001 0280000000000000"
            "0101 0004 0000000000000001 000001e000000000");
    QByteArray dds = hex("44445320 7c000000 07100000 e0010000 80020000 00000000 00000000");
    dds = dds.leftJustified(128, '\0');
    QByteArray volume = dds;
    volume[24] = 3;
    // 2^31 x 2^31 x 4: one more than 64 bits hold.
    QByteArray huge = hex("44445320 7c000000 07100000 00000080 00000080 00000000 04000000").leftJustified(128, '\0');
    QByteArray endless_jpg = hex("ffd8 fffe0000 fffe0000");
    struct CASE {
        char const* name;
        QByteArray bytes;
        std::optional<std::uint64_t> texels;
    };
    QTemporaryDir const folder;
    std::uint64_t const texels = 640 * 480;
    for (CASE const& given :
         {CASE{"a.TGA", tga, texels}, CASE{"a.png", png, texels}, CASE{"a.jpg", jpg, texels},
          CASE{"a.tif", tif, texels}, CASE{"b.tif", big_tif, texels}, CASE{"w.tif", wide_tif, texels},
          CASE{"a.dds", dds, texels}, CASE{"v.dds", volume, 3 * texels}, CASE{"huge.dds", huge, ~std::uint64_t{0}},
          CASE{"png.jpg", png, texels}, CASE{"cut.tga", tga.left(13), 0}, CASE{"cut.jpg", jpg.left(20), {}},
          CASE{"loop.jpg", endless_jpg, {}}, CASE{"empty.tga", {}, {}}, CASE{"a.txt", "text", {}}}) {
        QString const path = folder.filePath(given.name);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(given.bytes) == given.bytes.size());
        file.close();
        EXPECT_EQ(announced_texels(path), given.texels) << given.name;
        EXPECT_TRUE(given.texels != texels || announced_sides(path)->width == 640) << given.name;
    }
    EXPECT_FALSE(announced_texels(folder.filePath("none.png")));
}

}  // namespace
