// Every format name through compress_image, for both compressors with and without gamma correction, and what is special
// about the D3D and the ATI back-end.
#include "dds/compress_image.hpp"
#include "dds/compress_with_ati.hpp"
#include "dds/compress_with_d3d.hpp"
#include "platform/dds_container/dds_container.hpp"
#include "platform/directxtex/directxtex.hpp"
#include "platform/image_loader/load_image_file.hpp"
#include "platform/image_loader/picture.hpp"
#include "tests/dds/test_images.hpp"
#include "tests/host/framework/test_folder.hpp"

#include <gtest/gtest.h>

#include <thread>

namespace {

using IMAGE_LOADER::IMAGE;

class BACK_ENDS : public testing::Test {
protected:
    bool compress(IMAGE& image, TEXTURE_RULES const& rules, bool is_png = false) {
        sink.lines.clear();
        return compress_image(sink, rules, is_png, image, PHYSICAL_PATH(target));
    }

    /// "DX10 72", "DXT5", "32 bits", "32 bits with alpha"; then " x " and the number of levels.
    std::string written() {
        std::string cause;
        auto const bytes = IMAGE_LOADER::read_whole_file(target.toStdString(), cause);
        if (!bytes)
            return "no file";
        auto const description = dds_container::read_dds(*bytes, cause);
        if (!description)
            return cause;
        std::string text = description->four_cc;
        if (description->header_kind == dds_container::HEADER_KIND::dx10)
            text = "DX10 " + std::to_string(static_cast<int>(description->format));
        else if (text.empty())
            text = std::to_string(description->masks.bits_per_texel) + " bits" +
                   (description->masks.alpha != 0 ? " with alpha" : "");
        return text + " x " + std::to_string(description->mip_count);
    }

    /// Red, green, blue, alpha.
    std::array<int, 4> shown(std::uint32_t level, std::size_t texel = 0) {
        std::string cause;
        auto const picture = IMAGE_LOADER::load_picture(target.toStdString(), level, 0, cause);
        EXPECT_TRUE(picture) << cause;
        auto const& rgba = picture->rgba;
        return {rgba[4 * texel], rgba[4 * texel + 1], rgba[4 * texel + 2], rgba[4 * texel + 3]};
    }

    TEST_FOLDER folder;
    QString target = folder.path("a.dds");
    TEST_SINK sink;
};

TEXTURE_RULES rules_of(char const* format, bool gamma = false, COMPRESSOR_TYPE compressor = COMPRESSOR_TYPE::NVIDIA) {
    TEXTURE_RULES rules;
    rules.compression_format = QLatin1String(format);
    rules.need_gamma_correction = gamma;
    rules.compressor = compressor;
    return rules;
}

IMAGE ramp(std::uint32_t width, std::uint32_t height) {
    return make_image(width, height, [](std::uint32_t x, std::uint32_t y, std::uint32_t) {
        return TEXEL{static_cast<std::uint8_t>(x * 8), static_cast<std::uint8_t>(y * 8), 200,
                     static_cast<std::uint8_t>(x < 8 ? 255 : 0)};
    });
}

TEST_F(BACK_ENDS, every_format_name) {
    struct CASE {
        char const* name;
        char const* plain;
        char const* with_gamma;
        char const* plain_ati = nullptr;  ///< where the compressors differ
    };
    CASE const cases[] = {
        {"l8", "32 bits with alpha x 5", "32 bits with alpha x 5", "32 bits x 5"},
        {"rgb", "32 bits with alpha x 5", "DXT5 x 5", "32 bits x 5"},
        {"rgba", "32 bits with alpha x 5", "DXT5 x 5"},
        {"dxt1", "DXT1 x 5", "DX10 72 x 5"},
        {"dxt1a", "DXT1 x 5", "DX10 72 x 5"},
        {"dxt3", "DXT3 x 5", "DX10 75 x 5"},
        {"dxt5", "DXT5 x 5", "DX10 78 x 5"},
        {"dxt5n", "DXT5 x 5", "DXT5 x 5"},
        {"dxt1_or_dxt3", "DXT3 x 5", "DX10 75 x 5"},
        {"dxt1_or_dxt5", "DXT5 x 5", "DX10 78 x 5"},
        {"dxt1_or_dxt1a", "DXT1 x 5", "DX10 72 x 5"},
        {"bc7", "DX10 98 x 5", "DX10 99 x 5"},
        {"bc5n", "DX10 84 x 5", "DX10 84 x 5"},
        {"bc6", "DX10 95 x 5", "DX10 95 x 5"},
    };
    for (CASE const& c : cases) {
        for (COMPRESSOR_TYPE const compressor : {COMPRESSOR_TYPE::NVIDIA, COMPRESSOR_TYPE::ATI}) {
            for (bool const gamma : {false, true}) {
                IMAGE image = ramp(16, 8);
                QFile::remove(target);
                bool const is_ati = compressor == COMPRESSOR_TYPE::ATI;
                ASSERT_TRUE(compress(image, rules_of(c.name, gamma, compressor)))
                    << c.name << sink.lines.join(u'|').toStdString();
                bool const differs = is_ati && c.plain_ati != nullptr && (!gamma || QLatin1String(c.name) == "l8");
                EXPECT_EQ(written(), differs ? c.plain_ati
                                     : gamma ? c.with_gamma
                                             : c.plain)
                    << c.name << (gamma ? " with gamma" : "") << (is_ati ? " ati" : " nvidia");
            }
        }
    }
}

TEST_F(BACK_ENDS, d3d_makes_the_whole_chain_from_the_top_level) {
    TEXTURE_RULES rules = rules_of("bc7");
    rules.mipmaps = false;
#ifndef ZAB_SYSTEM_DIRECTXTEX
    // The library itself takes such sides on Windows alone.
    IMAGE odd = ramp(6, 9);
    EXPECT_TRUE(compress(odd, rules));
    EXPECT_EQ(written(), "DX10 98 x 4");
    EXPECT_NEAR(shown(0)[0], 200, 2);
    EXPECT_NEAR(shown(0, 5)[2], 40, 2);
#endif
    // Levels that the image brought along are not used.
    IMAGE levelled = make_image(
        8, 8,
        [](std::uint32_t, std::uint32_t, std::uint32_t level) {
            return TEXEL{0, 0, level == 0 ? std::uint8_t(90) : std::uint8_t(250), 255};
        },
        3);
    EXPECT_TRUE(compress(levelled, rules));
    EXPECT_EQ(written(), "DX10 98 x 4");
    EXPECT_NEAR(shown(1)[0], 90, 1);

    for (bool const gamma : {false, true}) {
        IMAGE checker = make_image(8, 8, [](std::uint32_t x, std::uint32_t y, std::uint32_t) {
            std::uint8_t const value = (x + y) % 2 ? 255 : 0;
            return TEXEL{value, value, value, 255};
        });
        EXPECT_TRUE(compress(checker, rules_of("bc7", gamma)));
        EXPECT_NEAR(shown(1)[0], gamma ? 188 : 128, 1);
    }
}

TEST_F(BACK_ENDS, d3d_failures_leave_com_initialised) {
    struct CASE {
        char const* what;
        bool is_png;
        QString path;
        char const* line;
        HRESULT next_initialisation;
    };
    CASE const cases[] = {
        {"success", false, target, "", S_OK},
        {"a PNG's texels have no number", true, target, "Couldn't create texture", S_FALSE},
        {"no folder", false, folder.path("none/a.dds"), "Couldn't save file", S_FALSE},
    };
    for (CASE const& c : cases) {
        // COM counts for each thread.
        std::thread([&] {
            target = c.path;
            QFile::remove(target);
            IMAGE image = ramp(8, 8);
            EXPECT_EQ(compress(image, rules_of("bc7"), c.is_png), *c.line == '\0') << c.what;
            EXPECT_EQ(sink.lines.join('|'), c.line);
            EXPECT_EQ(QFile::exists(target), *c.line == '\0') << c.what;
            EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), c.next_initialisation) << c.what;
        }).join();
    }
}

TEST_F(BACK_ENDS, d3d_takes_colours_into_linear_light_when_asked) {
    IMAGE const grey = make_image(8, 8, [](auto, auto, auto) { return TEXEL{188, 188, 188, 188}; });
    for (auto const& [convert, expected] : {std::pair{false, 188}, {true, 131}}) {
        ASSERT_TRUE(compress_with_d3d(sink, PHYSICAL_PATH(target), DXGI_CHOICE::bc7_unorm, grey, false, convert));
        EXPECT_NEAR(shown(1)[0], expected, 1);
        EXPECT_NEAR(shown(1)[3], 188, 1);
    }
}

TEST_F(BACK_ENDS, ati_refuses_before_it_touches_a_file) {
    folder.write("a.dds", "earlier");
    BACK_END_SETTINGS settings;
    settings.mipmaps = false;
    EXPECT_FALSE(compress_with_ati(sink, PHYSICAL_PATH(target), settings, ramp(8, 8), {}));
    EXPECT_EQ(sink.lines.join('|'), "ATI compressor does not support not generating mipmaps");
    settings.mipmaps = true;
    settings.format = static_cast<NVTT_FORMAT>(6);
    settings.format_name = "some";
    EXPECT_FALSE(compress_with_ati(sink, PHYSICAL_PATH(target), settings, ramp(8, 8), {}));
    EXPECT_EQ(sink.lines.value(1), "ATI compressor does not support some output format!");
    QFile file(target);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "earlier");
}

TEST_F(BACK_ENDS, ati_says_why_a_file_cannot_be_written) {
    target = folder.path("none/a.dds");
    IMAGE image = ramp(8, 8);
    EXPECT_FALSE(compress(image, rules_of("dxt1", false, COMPRESSOR_TYPE::ATI)));
    EXPECT_EQ(sink.lines.join('|'), "Failed to write the texture: No such file or directory");
}

TEST_F(BACK_ENDS, ati_texels_and_levels) {
    auto const flat = [](TEXEL texel, std::uint32_t levels, std::uint8_t step) {
        return make_image(
            8, 8,
            [=](std::uint32_t, std::uint32_t, std::uint32_t level) {
                TEXEL shifted = texel;
                shifted[2] = static_cast<std::uint8_t>(shifted[2] + step * level);
                return shifted;
            },
            levels);
    };
    struct CASE {
        char const* format;
        std::uint32_t levels;
        std::array<int, 4> top, second, last;
    };
    // Blue 40, green 80, red 120, alpha 160, and 100 more red in the level below. The image's own levels are kept, the
    // missing ones follow from the last. A normal map has its red in alpha, by whichever way it goes.
    CASE const cases[] = {
        {"rgba", 1, {120, 80, 40, 160}, {120, 80, 40, 160}, {120, 80, 40, 160}},
        {"rgba", 2, {120, 80, 40, 160}, {220, 80, 40, 160}, {220, 80, 40, 160}},
        {"rgb", 1, {120, 80, 40, 255}, {120, 80, 40, 255}, {120, 80, 40, 255}},
        {"dxt5n", 1, {255, 80, 0, 120}, {255, 80, 0, 120}, {255, 80, 0, 120}},
        {"dxt5n", 2, {255, 80, 0, 120}, {255, 80, 0, 220}, {255, 80, 0, 220}},
        {"dxt5", 2, {120, 80, 40, 160}, {220, 80, 40, 160}, {220, 80, 40, 160}},
    };
    for (CASE const& c : cases) {
        IMAGE image = flat({40, 80, 120, 160}, c.levels, 100);
        ASSERT_TRUE(compress(image, rules_of(c.format, false, COMPRESSOR_TYPE::ATI)));
        for (auto const& [level, expected] : {std::pair{0U, c.top}, {1U, c.second}, {3U, c.last}}) {
            auto const actual = shown(level);
            for (std::size_t channel = 0; channel < 4; ++channel)
                EXPECT_NEAR(actual[channel], expected[channel], 4) << c.format << c.levels << " level " << level;
        }
    }
    // One bit of alpha, cut in the middle, only where the format asks for it.
    for (char const* const format : {"dxt1a", "dxt1"}) {
        IMAGE cut = flat({40, 80, 120, 127}, 1, 0);
        ASSERT_TRUE(compress(cut, rules_of(format, false, COMPRESSOR_TYPE::ATI)));
        EXPECT_EQ(shown(0)[3], QLatin1String(format) == "dxt1a" ? 0 : 255);
    }
}

}  // namespace
