// The two older actions, with real files: TGA to DDS through the tool-data library, and any image to any other through
// FreeImage.
#include "blocks/encode.hpp"
#include "dds/action_dds.hpp"
#include "dds/action_freeimage.hpp"
#include "platform/dds_container/dds_container.hpp"
#include "platform/image_loader/freeimage_bitmap.hpp"
#include "platform/image_loader/load_image_file.hpp"
#include "processor/host/paths.hpp"
#include "tests/host/framework/test_folder.hpp"
#include "tests/support/full_disk.hpp"
#include "tests/support/no_processor.hpp"
#include "tests/support/test_rules.hpp"
#include "tests/support/test_tga.hpp"

#include <FreeImage.h>
#include <QSet>
#include <gtest/gtest.h>

#include <cstring>
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

class LEGACY_ACTIONS : public testing::Test {
protected:
    LEGACY_ACTIONS() {
        QDir().mkpath(folder.path("raw"));
        PATHS::set_roots(PHYSICAL_PATH(folder.path("raw")), PHYSICAL_PATH(folder.path("out")));
    }

    /// The status; the lines stand in `lines`, the target's path in `target`.
    int run(ACTION_CONVERT& action) {
        target = action.get_target();
        int const status = action.run({}, TEST_RULES());
        lines = action.output_lines().join('|').replace(folder.path() + '/', "");
        return status;
    }

    QByteArray contents(QString const& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    TEST_FOLDER folder;
    NO_PROCESSOR processor;
    QString target;
    QString lines;
};

QByteArray tga_with_alpha(int alpha) {
    return tga(8, 8, [=](int x, int y) { return std::array{x * 30, y * 30, 200, alpha}; });
}

TEST_F(LEGACY_ACTIONS, dds_by_alpha_and_by_ban) {
    struct CASE {
        int alpha;
        bool forbid_dxt1;
        char const* four_cc;
    };
    for (CASE const& c : {CASE{255, false, "DXT1"}, CASE{255, true, "DXT5"}, CASE{100, false, "DXT5"}}) {
        PHYSICAL_PATH const source(folder.write("raw/d/a.tga", tga_with_alpha(c.alpha)));
        QString const work_file = folder.write("raw/d/a.dds", "earlier");
        ACTION_DDS action(source, processor, c.forbid_dxt1);
        ACTION_DDS copy(action);
        QString announced;
        copy.set_working_file_listener([&](PHYSICAL_PATH const& file) {
            // Not yet touched, and then there.
            EXPECT_EQ(contents(work_file) == "earlier", announced.isEmpty());
            announced += file;
        });
        EXPECT_EQ(run(copy), ACTION_INTERFACE::STATUS_SUCCEEDED) << lines.toStdString();
        EXPECT_EQ(announced, work_file + work_file);
        EXPECT_EQ(target, folder.path("out/d/a.dds"));
        EXPECT_EQ(copy.get_name(true), "Convert texture (d/a.tga)");
        EXPECT_FALSE(QFile::exists(work_file));
        std::string cause;
        auto const bytes = IMAGE_LOADER::read_whole_file(target.toStdString(), cause);
        ASSERT_TRUE(bytes) << cause;
        auto const description = dds_container::read_dds(*bytes, cause);
        ASSERT_TRUE(description) << cause;
        EXPECT_EQ(description->four_cc, c.four_cc);
        EXPECT_EQ(description->mip_count, 4U);
    }
}

TEST_F(LEGACY_ACTIONS, dds_failure_leaves_neither_work_file_nor_target) {
    for (char const* const name : {"raw/broken.tga", "raw/none.tga"}) {
        if (QLatin1String(name) == "raw/broken.tga")
            folder.write(name, "no image");
        ACTION_DDS action(PHYSICAL_PATH(folder.path(name)), processor, false);
        QString const work_file = folder.write(QString(name).replace(".tga", ".dds"), "earlier");
        folder.write("out/" + QString(name).section('/', 1).replace(".tga", ".dds"), "earlier");
        EXPECT_EQ(run(action), ACTION_INTERFACE::STATUS_FAILED);
        EXPECT_TRUE(lines.contains(name)) << lines.toStdString();
        EXPECT_FALSE(QFile::exists(work_file)) << name;
        EXPECT_FALSE(QFile::exists(target)) << name;
    }
}

TEST_F(LEGACY_ACTIONS, freeimage_converts) {
    struct CASE {
        char const* format;
        QByteArray magic;
        unsigned bits;
    };
    PHYSICAL_PATH const source(folder.write("raw/d/a.tga", tga_with_alpha(100)));
    for (CASE const& c : {CASE{"jpg", QByteArray::fromHex("ffd8ff"), 24}, CASE{"png", "\x89PNG", 32},
                          CASE{"bmp", "BM", 32}, CASE{"tga", QByteArray::fromHex("000002"), 32}}) {
        ACTION_FREEIMAGE action(source, c.format, processor);
        ACTION_FREEIMAGE copy(action);
        EXPECT_EQ(run(copy), ACTION_INTERFACE::STATUS_SUCCEEDED) << lines.toStdString();
        EXPECT_EQ(target, folder.path(QStringLiteral("out/d/a.") + c.format));
        EXPECT_TRUE(contents(target).startsWith(c.magic)) << c.format;
        QByteArray const path = QFile::encodeName(target);
        FIBITMAP* const written = FreeImage_Load(FreeImage_GetFIFFromFilename(path), path);
        ASSERT_NE(written, nullptr) << c.format;
        EXPECT_EQ(FreeImage_GetBPP(written), c.bits) << c.format;
        RGBQUAD texel = {};
        // Row 0 is the lowest.
        EXPECT_TRUE(FreeImage_GetPixelColor(written, 0, 0, &texel));
        EXPECT_NEAR(texel.rgbRed, 200, 12) << c.format;
        EXPECT_NEAR(texel.rgbGreen, 210, 12) << c.format;
        FreeImage_Unload(written);
    }
}

TEST_F(LEGACY_ACTIONS, freeimage_converts_what_a_format_cannot_hold) {
    for (FREE_IMAGE_TYPE const type : {FIT_BITMAP, FIT_UINT16, FIT_RGB16, FIT_RGBA16}) {
        // All bytes 60: every channel is 0x3c3c, an index into a grey palette.
        IMAGE_LOADER::FREEIMAGE_BITMAP const bitmap(FreeImage_AllocateT(type, 8, 8, 8));
        for (int y = 0; y < 8; ++y)
            std::memset(FreeImage_GetScanLine(bitmap.get(), y), 60, FreeImage_GetPitch(bitmap.get()));
        PHYSICAL_PATH const source(folder.write("raw/a.png", ""));
        ASSERT_TRUE(FreeImage_Save(FIF_PNG, bitmap.get(), QFile::encodeName(source)));
        for (char const* const format : {"tga", "bmp", "webp", "jpg"}) {
            ACTION_FREEIMAGE action(source, format, processor);
            EXPECT_EQ(run(action), ACTION_INTERFACE::STATUS_SUCCEEDED) << format << lines.toStdString();
            QByteArray const path = QFile::encodeName(target);
            IMAGE_LOADER::FREEIMAGE_BITMAP const written(FreeImage_ConvertTo24Bits(
                IMAGE_LOADER::FREEIMAGE_BITMAP(FreeImage_Load(FreeImage_GetFIFFromFilename(path), path)).get()));
            RGBQUAD texel = {};
            ASSERT_TRUE(FreeImage_GetPixelColor(written.get(), 5, 5, &texel)) << type << format;
            EXPECT_NEAR(texel.rgbGreen, 60, 3) << type << format;
        }
    }
}

TEST_F(LEGACY_ACTIONS, a_tif_has_the_same_bytes_whatever_memory_held) {
#ifdef __GLIBC__
    PHYSICAL_PATH const source(folder.write("raw/a.tga", tga_with_alpha(255)));
    QSet<QByteArray> targets;
    for (int const fill : {0x55, 0xaa}) {
        mallopt(M_PERTURB, fill);
        // Some of these have texels of an odd number of bytes, behind which the next thing begins at an even one.
        QByteArray all;
        for (int side = 1; side <= 8; ++side) {
            folder.write("raw/a.tga", tga(side, 1, [](int x, int) { return std::array{x * 30, 77, 200, 255}; }));
            ACTION_FREEIMAGE action(source, "tif", processor);
            EXPECT_EQ(run(action), ACTION_INTERFACE::STATUS_SUCCEEDED);
            all += contents(target);
        }
        targets.insert(all);
    }
    mallopt(M_PERTURB, 0);
    EXPECT_EQ(targets.size(), 1);
#endif
}

TEST_F(LEGACY_ACTIONS, freeimage_failures_leave_no_target) {
    folder.write("raw/a.tga", tga_with_alpha(100));
    folder.write("raw/broken.png", QByteArray::fromHex("89504e470d0a1a0a"));
    folder.write("raw/a.xyz", tga_with_alpha(255));
    folder.write("raw/huge.tga", QByteArray::fromHex("000002000000000000000000ffffffff2028") + "ten bytes.");
    // 16384 x 16384 texels of DXT1, of which one block follows.
    folder.write("raw/huge.dds", QByteArray::fromHex("444453207c000000071000000040000000400000")
                                     .leftJustified(76, '\0')
                                     .append(QByteArray::fromHex("200000000400000044585431"))
                                     .leftJustified(136, '\0'));
    folder.write("raw/cut.dds", "DDS |");
    folder.write("raw/cut.tga", tga_with_alpha(255).chopped(1));
    // A run of 64 texels, of which the last byte is missing; and one that goes on behind the last texel.
    QByteArray const runs = QByteArray::fromHex("00000a0000000000000000000800080018");
    folder.write("raw/cut_run.tga", runs + QByteArray::fromHex("00bf0102"));
    folder.write("raw/long_run.tga", runs + QByteArray::fromHex("00c0010203"));
    // Two levels of DXT1, of which the second is missing.
    folder.write("raw/cut_level.dds",
                 QByteArray::fromHex("444453207c00000007100200080000000800000000000000000000000200")
                     .leftJustified(76, '\0')
                     .append(QByteArray::fromHex("200000000400000044585431"))
                     .leftJustified(160, '\0'));
    struct CASE {
        char const* name;
        char const* format;
        char const* last_line;
    };
    CASE const cases[] = {
        {"raw/a.tga", "nosuch", "Unknown image file format: nosuch"},
        {"raw/a.xyz", "png", "Unknown image file format: raw/a.xyz"},
        {"raw/broken.png", "jpg", "Failed to load raw/broken.png"},
        {"raw/none.tga", "jpg", "Failed to load raw/none.tga"},
        {"raw/huge.tga", "jpg", "Failed to load raw/huge.tga"},
        {"raw/huge.dds", "jpg", "Failed to load raw/huge.dds"},
        {"raw/cut.dds", "jpg", "Failed to load raw/cut.dds"},
        {"raw/cut.tga", "png", "Failed to load raw/cut.tga"},
        {"raw/cut_run.tga", "png", "Failed to load raw/cut_run.tga"},
        {"raw/long_run.tga", "png", "Failed to load raw/long_run.tga"},
        {"raw/cut_level.dds", "png", "Failed to load raw/cut_level.dds"},
        {"raw/a.tga", "pcx", "FreeImage writes no PCX files"},
        {"raw/a.tga", "gif", "GIF files cannot hold 32-bit RGBA texels"},
    };
    for (CASE const& c : cases) {
        ACTION_FREEIMAGE action(PHYSICAL_PATH(folder.path(c.name)), c.format, processor);
        EXPECT_EQ(run(action), ACTION_INTERFACE::STATUS_FAILED) << c.last_line;
        EXPECT_EQ(lines.section('|', -1), c.last_line);
        EXPECT_FALSE(QFile::exists(target)) << c.last_line;
    }
}

TEST_F(LEGACY_ACTIONS, a_full_disk_is_a_failure) {
    PHYSICAL_PATH const source(folder.write("raw/a.tga", tga(64, 64, [](int x, int y) {
                                                return std::array{x * y % 256, x * 3 % 256, y * 5 % 256, x};
                                            })));
    // Clang's OpenMP writes a small file when it is first called, and ends the process where it cannot.
    std::array<std::uint8_t, 64> const texels{};
    std::array<std::uint8_t, 8> code{};
    ASSERT_TRUE(blocks::encode_image(blocks::FORMAT::bc1, {texels.data(), 4, 4, 16}, {}, 1, code));
    for (char const* const format : {"bmp", "tga", "png", "tif", "dds"}) {
        std::unique_ptr<ACTION_CONVERT> action;
        if (QLatin1String(format) == "dds")
            action = std::make_unique<ACTION_DDS>(source, processor, true);
        else
            action = std::make_unique<ACTION_FREEIMAGE>(source, format, processor);
        int status = 0;
        {
            FULL_DISK const disk(1000);
            status = run(*action);
        }
        EXPECT_EQ(status, ACTION_INTERFACE::STATUS_FAILED) << format;
        EXPECT_NE(lines, "") << format;
        EXPECT_EQ(QDir(folder.path("out")).entryList(QDir::Files), QStringList()) << format;
    }
    EXPECT_EQ(QDir(folder.path("raw")).entryList(QDir::Files), QStringList("a.tga"));
}

TEST_F(LEGACY_ACTIONS, freeimage_messages_reach_the_action_only_while_it_runs) {
    folder.write("raw/broken.png", QByteArray::fromHex("89504e470d0a1a0a"));
    ACTION_FREEIMAGE action(PHYSICAL_PATH(folder.path("raw/broken.png")), "jpg", processor);
    run(action);
    int const told = action.output_lines().size();
    // The library's own message, and the action's.
    EXPECT_EQ(told, 2) << lines.toStdString();
    FreeImage_OutputMessageProc(FIF_PNG, "for nobody");
    EXPECT_EQ(action.output_lines().size(), told);
}

}  // namespace
