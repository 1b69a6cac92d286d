// The DirectXTex interface as this project supplies it. Expected numbers are worked out by hand.
#include "platform/directxtex/directxtex.hpp"

#include "blocks/decode.hpp"
#include "platform/dds_container/dds_container.hpp"
#include "platform/image_loader/load_image_file.hpp"
#include "tests/platform/temporary_file.hpp"

#include <gtest/gtest.h>

#include <array>
#include <thread>

namespace {

using namespace DirectX;
using TEXEL = std::array<std::uint8_t, 4>;

/// One level of blue-first texels, row by row.
ScratchImage image_of(std::size_t width, std::size_t height, std::vector<TEXEL> const& texels) {
    ScratchImage image;
    EXPECT_EQ(image.Initialize2D(DXGI_FORMAT_B8G8R8A8_UNORM, width, height, 1, 1), S_OK);
    for (std::size_t i = 0; i < texels.size(); ++i)
        std::copy(texels[i].begin(), texels[i].end(), image.GetPixels() + 4 * i);
    return image;
}

ScratchImage one_colour(TEXEL const& texel) {
    return image_of(4, 4, std::vector<TEXEL>(16, texel));
}

ScratchImage noise(std::size_t width, std::size_t height) {
    std::vector<TEXEL> texels(width * height);
    std::uint32_t state = 1;
    for (TEXEL& texel : texels) {
        for (std::uint8_t& channel : texel)
            channel = static_cast<std::uint8_t>((state = state * 1664525 + 1013904223) >> 24);
    }
    return image_of(width, height, texels);
}

std::vector<TEXEL> texels_of(ScratchImage const& image, std::size_t level) {
    Image const& view = *image.GetImage(level, 0, 0);
    std::vector<TEXEL> texels;
    for (std::size_t i = 0; i < view.width * view.height; ++i)
        texels.push_back({view.pixels[4 * i], view.pixels[4 * i + 1], view.pixels[4 * i + 2], view.pixels[4 * i + 3]});
    return texels;
}

ScratchImage compressed(ScratchImage const& image, DXGI_FORMAT format, TEX_COMPRESS_FLAGS flags,
                        float threshold = 0.5F) {
    ScratchImage blocks;
    EXPECT_EQ(Compress(image.GetImages(), image.GetImageCount(), image.GetMetadata(), format, flags, threshold, blocks),
              S_OK);
    return blocks;
}

std::vector<std::uint8_t> bytes_of(ScratchImage const& image) {
    return {image.GetPixels(), image.GetPixels() + image.GetPixelsSize()};
}

/// The first texel of a block, red first.
std::array<float, 4> decoded(ScratchImage const& image, blocks::FORMAT format) {
    std::array<float, 64> texels = {};
    EXPECT_TRUE(
        blocks::decode_image_rgba32f(format, {image.GetPixels(), blocks::bytes_per_block(format)}, 4, 4, texels));
    return {texels[0], texels[1], texels[2], texels[3]};
}

TEST(directxtex_image, is_laid_out_as_the_format_says) {
    ScratchImage image;
    struct CASE {
        DXGI_FORMAT format;
        std::size_t width, height, levels;
        HRESULT result;
        std::size_t images, bytes, row_pitch;
    };
    CASE const cases[] = {
        {DXGI_FORMAT_B8G8R8A8_UNORM, 5, 3, 1, S_OK, 1, 60, 20},
        {DXGI_FORMAT_BC1_UNORM_SRGB, 5, 3, 0, S_OK, 3, 16 + 8 + 8, 16},
        {DXGI_FORMAT_BC7_UNORM, 8, 8, 2, S_OK, 2, 64 + 16, 32},
        {DXGI_FORMAT_UNKNOWN, 4, 4, 1, E_INVALIDARG, 0, 0, 0},
        {DXGI_FORMAT_B8G8R8A8_UNORM, 0, 4, 1, E_INVALIDARG, 0, 0, 0},
        {DXGI_FORMAT_B8G8R8A8_UNORM, 4, 4, 4, E_INVALIDARG, 0, 0, 0},
        {DXGI_FORMAT_B8G8R8A8_UNORM, 65536, 65536, 1, E_INVALIDARG, 0, 0, 0},
        {DXGI_FORMAT_B8G8R8A8_UNORM, std::size_t{1} << 40, 4, 1, E_INVALIDARG, 0, 0, 0},
    };
    for (CASE const& c : cases) {
        EXPECT_EQ(image.Initialize2D(c.format, c.width, c.height, 1, c.levels), c.result) << c.width;
        EXPECT_EQ(image.GetImageCount(), c.images) << c.width;
        EXPECT_EQ(image.GetPixelsSize(), c.bytes) << c.width;
        if (c.images > 0) {
            EXPECT_EQ(image.GetImage(0, 0, 0)->rowPitch, c.row_pitch) << c.width;
        }
        EXPECT_EQ(image.GetImage(c.images, 0, 0), nullptr);
    }
}

TEST(directxtex_mip_maps, box_filter_of_any_size) {
    ScratchImage chain;
    // Five columns become two: each covers two and a half.
    ScratchImage const row =
        image_of(5, 1, {{10, 0, 0, 255}, {20, 0, 0, 255}, {30, 0, 0, 255}, {40, 0, 0, 255}, {50, 0, 255, 0}});
    ASSERT_EQ(GenerateMipMaps(*row.GetImages(), TEX_FILTER_BOX, 0, chain), S_OK);
    ASSERT_EQ(chain.GetImageCount(), 3U);
    EXPECT_EQ(texels_of(chain, 0), texels_of(row, 0));
    EXPECT_EQ(texels_of(chain, 1), (std::vector<TEXEL>{{18, 0, 0, 255}, {42, 0, 102, 153}}));
    EXPECT_EQ(texels_of(chain, 2), (std::vector<TEXEL>{{30, 0, 51, 204}}));

    ScratchImage const black_and_white = image_of(2, 1, {{0, 0, 0, 0}, {255, 255, 255, 255}});
    ASSERT_EQ(GenerateMipMaps(*black_and_white.GetImages(), TEX_FILTER_BOX, 0, chain), S_OK);
    EXPECT_EQ(texels_of(chain, 1)[0], (TEXEL{128, 128, 128, 128}));
    // Half the light is sRGB 188; alpha is no light.
    ASSERT_EQ(GenerateMipMaps(*black_and_white.GetImages(), TEX_FILTER_BOX | TEX_FILTER_SRGB, 0, chain), S_OK);
    EXPECT_EQ(texels_of(chain, 1)[0], (TEXEL{188, 188, 188, 128}));

    ASSERT_EQ(GenerateMipMaps(*one_colour({1, 2, 3, 4}).GetImages(), TEX_FILTER_BOX, 2, chain), S_OK);
    EXPECT_EQ(chain.GetImageCount(), 2U);
    ScratchImage const texel = image_of(1, 1, {{1, 2, 3, 4}});
    ASSERT_EQ(GenerateMipMaps(*texel.GetImages(), TEX_FILTER_BOX, 0, chain), S_OK);
    EXPECT_EQ(texels_of(chain, 0), texels_of(texel, 0));
    EXPECT_EQ(GenerateMipMaps(*texel.GetImages(), TEX_FILTER_DEFAULT, 0, chain), HRESULT_E_NOT_SUPPORTED);
}

TEST(directxtex_compress, values_arrive) {
    auto const parallel = TEX_COMPRESS_PARALLEL | TEX_COMPRESS_BC7_USE_3SUBSETS;
    // Blue 10, green 20, red 30: red first once decoded.
    auto const bc7 =
        decoded(compressed(one_colour({10, 20, 30, 40}), DXGI_FORMAT_BC7_UNORM, parallel), blocks::FORMAT::bc7);
    for (std::size_t channel = 0; channel < 4; ++channel)
        EXPECT_NEAR(bc7[channel] * 255, (std::array{30, 20, 10, 40})[channel], 0.51);
    // Signed: 0 … 1 becomes −1 … 1.
    auto const bc5 =
        decoded(compressed(one_colour({0, 0, 255, 0}), DXGI_FORMAT_BC5_SNORM, parallel), blocks::FORMAT::bc5_snorm);
    EXPECT_EQ(bc5[0], 1.0F);
    EXPECT_EQ(bc5[1], -1.0F);
    // As numbers, without a curve.
    auto const bc6 =
        decoded(compressed(one_colour({51, 102, 255, 0}), DXGI_FORMAT_BC6H_UF16, parallel), blocks::FORMAT::bc6h_uf16);
    EXPECT_NEAR(bc6[0], 1.0, 0.003);
    EXPECT_NEAR(bc6[1], 0.4, 0.003);
    EXPECT_NEAR(bc6[2], 0.2, 0.003);
}

TEST(directxtex_compress, srgb_on_both_sides_cancels) {
    ScratchImage const grey = one_colour({55, 55, 55, 255});
    auto const red = [&](DXGI_FORMAT format, TEX_COMPRESS_FLAGS flags) {
        return decoded(compressed(grey, format, flags), blocks::FORMAT::bc7)[0] * 255;
    };
    EXPECT_NEAR(red(DXGI_FORMAT_BC7_UNORM, TEX_COMPRESS_DEFAULT), 55, 0.51);
    EXPECT_NEAR(red(DXGI_FORMAT_BC7_UNORM_SRGB, TEX_COMPRESS_SRGB), 55, 0.51);
    EXPECT_NEAR(red(DXGI_FORMAT_BC7_UNORM_SRGB, TEX_COMPRESS_SRGB_IN), 55, 0.51);
    EXPECT_NEAR(red(DXGI_FORMAT_BC7_UNORM_SRGB, TEX_COMPRESS_DEFAULT), 128, 0.51);
    EXPECT_NEAR(red(DXGI_FORMAT_BC7_UNORM, TEX_COMPRESS_SRGB_IN), 10, 0.51);
}

TEST(directxtex_compress, alpha_threshold_of_bc1) {
    struct CASE {
        std::uint8_t alpha;
        float threshold;
        float expected;
    };
    for (CASE const& c :
         {CASE{127, 0.5F, 0}, CASE{128, 0.5F, 1}, CASE{0, 0.0F, 1}, CASE{254, 1.0F, 0}, CASE{255, 1.0F, 1}}) {
        auto const blocks =
            compressed(one_colour({9, 9, 9, c.alpha}), DXGI_FORMAT_BC1_UNORM_SRGB, TEX_COMPRESS_SRGB, c.threshold);
        EXPECT_EQ(decoded(blocks, blocks::FORMAT::bc1)[3], c.expected) << int{c.alpha} << " against " << c.threshold;
    }
}

TEST(directxtex_compress, threads_change_nothing) {
    ScratchImage const image = noise(61, 35);
    for (DXGI_FORMAT const format : {DXGI_FORMAT_BC1_UNORM_SRGB, DXGI_FORMAT_BC5_SNORM, DXGI_FORMAT_BC7_UNORM_SRGB}) {
        EXPECT_EQ(bytes_of(compressed(image, format, TEX_COMPRESS_SRGB)),
                  bytes_of(compressed(image, format, TEX_COMPRESS_SRGB | TEX_COMPRESS_PARALLEL)))
            << format;
    }
}

TEST(directxtex_compress, refuses_what_it_cannot_do) {
    ScratchImage const image = noise(8, 8);
    ScratchImage blocks;
    auto const result = [&](TexMetadata const& metadata, std::size_t count, DXGI_FORMAT format) {
        return Compress(image.GetImages(), count, metadata, format, TEX_COMPRESS_DEFAULT, 0.5F, blocks);
    };
    TexMetadata wrong_width = image.GetMetadata();
    wrong_width.width = 16;
    TexMetadata two_levels = image.GetMetadata();
    two_levels.mipLevels = 2;
    EXPECT_EQ(result(image.GetMetadata(), 1, DXGI_FORMAT_B8G8R8A8_UNORM), E_INVALIDARG);
    EXPECT_EQ(result(two_levels, 1, DXGI_FORMAT_BC7_UNORM), E_INVALIDARG);
    EXPECT_EQ(result(wrong_width, 1, DXGI_FORMAT_BC7_UNORM), E_INVALIDARG);
    EXPECT_EQ(blocks.GetImageCount(), 0U);
    TexMetadata blocks_again = image.GetMetadata();
    blocks_again.format = DXGI_FORMAT_BC1_UNORM;
    EXPECT_EQ(result(blocks_again, 1, DXGI_FORMAT_BC7_UNORM), HRESULT_E_NOT_SUPPORTED);
}

TEST(directxtex_save, header_and_whole_file) {
    ScratchImage const blocks = compressed(noise(8, 4), DXGI_FORMAT_BC1_UNORM, TEX_COMPRESS_DEFAULT);
    auto const save = [&](DDS_FLAGS flags, std::wstring const& path) {
        return SaveToDDSFile(blocks.GetImages(), blocks.GetImageCount(), blocks.GetMetadata(), flags, path.c_str());
    };
    platform_test::TEMPORARY_FILE const file("\u00e9\u4e16.dds");
    std::u32string const name = file.path().u32string();
    for (DDS_FLAGS const flags : {DDS_FLAGS_NONE, DDS_FLAGS_FORCE_DX10_EXT | DDS_FLAGS_NO_LEGACY_EXPANSION}) {
        ASSERT_EQ(save(flags, {name.begin(), name.end()}), S_OK);
        std::string cause;
        auto const bytes = IMAGE_LOADER::read_whole_file(file.path(), cause);
        ASSERT_TRUE(bytes) << cause;
        auto const description = dds_container::read_dds(*bytes, cause);
        ASSERT_TRUE(description) << cause;
        EXPECT_EQ(description->header_kind == dds_container::HEADER_KIND::dx10, flags != DDS_FLAGS_NONE);
        // The depth field, as the library itself fills it.
        EXPECT_EQ((*bytes)[24], flags != DDS_FLAGS_NONE ? 1 : 0);
        EXPECT_EQ(std::vector(bytes->end() - 16, bytes->end()), bytes_of(blocks));
    }
    EXPECT_TRUE(FAILED(save(DDS_FLAGS_NONE, L"/no/such/folder/a.dds")));
}

TEST(com, counts_for_each_thread) {
    std::thread([] {
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_FALSE);
        EXPECT_TRUE(FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
        std::thread([] { EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK); }).join();
        CoUninitialize();
        CoUninitialize();
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    }).join();
}

}  // namespace
