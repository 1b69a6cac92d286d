// The encoders' front door and the formats of the BC1 family: what is refused, the image's edges, exactness where a
// format allows it, alpha, and the same bytes from every instruction set, number of threads and division
// into rows.
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "blocks/decode.hpp"
#include "blocks/encode.hpp"
#include "encoder_checks.hpp"

namespace {

using namespace blocks;
using checks::BYTES;

constexpr EFFORT efforts[] = {EFFORT::fast, EFFORT::normal, EFFORT::best};

constexpr FORMAT batch_formats[] = {FORMAT::bc1,       FORMAT::bc2,       FORMAT::bc3,      FORMAT::bc4_unorm,
                                    FORMAT::bc4_snorm, FORMAT::bc5_unorm, FORMAT::bc5_snorm};

std::vector<std::uint8_t> encode(FORMAT format, BYTES const& image, ENCODE_OPTIONS const& options, int threads = 1) {
    std::vector<std::uint8_t> out(encoded_bytes(format, image.width, image.height).value());
    EXPECT_TRUE(encode_image(format, image.view(), options, threads, out));
    return out;
}

BYTES round_trip(FORMAT format, BYTES const& image, ENCODE_OPTIONS const& options) {
    BYTES decoded(image.width, image.height);
    EXPECT_TRUE(decode_image_rgba8(format, encode(format, image, options), image.width, image.height, decoded.texels));
    return decoded;
}

BYTES filled(std::uint32_t width, std::uint32_t height, std::array<std::uint8_t, 4> const& texel) {
    BYTES image(width, height);
    for (std::size_t i = 0; i < image.texels.size(); ++i) {
        image.texels[i] = texel[i % 4];
    }
    return image;
}

/// Mean squared error of the channels whose weight is not 0.
double mean_error(BYTES const& a, BYTES const& b, std::array<double, 4> const& weight) {
    double sum = 0;
    double weights = 0;
    for (std::size_t i = 0; i < a.texels.size(); ++i) {
        double const difference = a.texels[i] - b.texels[i];
        sum += difference * difference * weight[i % 4];
        weights += weight[i % 4];
    }
    return sum / weights;
}

TEST(encode, refuses_what_cannot_be) {
    BYTES const image(8, 8);
    std::vector<std::uint8_t> out(32);
    RGBA8_VIEW const good = image.view();
    EXPECT_TRUE(encode_image(FORMAT::bc1, good, {}, 1, out));
    EXPECT_FALSE(encode_image(FORMAT::bc3, good, {}, 1, out));
    EXPECT_FALSE(encode_image(FORMAT::bc1, good, {}, 0, out));
    EXPECT_FALSE(encode_image(FORMAT::bc1, RGBA8_VIEW{nullptr, 8, 8, 32}, {}, 1, out));
    EXPECT_FALSE(encode_image(FORMAT::bc1, RGBA8_VIEW{good.texels, 0, 8, 32}, {}, 1, out));
    EXPECT_FALSE(encode_image(FORMAT::bc1, RGBA8_VIEW{good.texels, 8, 8, 31}, {}, 1, out));
    std::uint32_t const huge = std::numeric_limits<std::uint32_t>::max();
    EXPECT_FALSE(encode_image(FORMAT::bc1, RGBA8_VIEW{good.texels, huge, huge, 0}, {}, 1, out));
    EXPECT_FALSE(encode_rows(FORMAT::bc1, good, {}, 1, 2, out));
    EXPECT_FALSE(encode_rows(FORMAT::bc1, good, {}, huge, 2, out));
    EXPECT_TRUE(encode_rows(FORMAT::bc1, good, {}, 2, 0, out));
    checks::HALVES const halves(4, 4);
    EXPECT_TRUE(encode_image(FORMAT::bc6h_uf16, halves.view(), {}, 1, out));
    EXPECT_FALSE(encode_image(FORMAT::bc7, halves.view(), {}, 1, out));

    EXPECT_EQ(encoded_bytes(FORMAT::bc1, 1, 1), 8u);
    EXPECT_EQ(encoded_bytes(FORMAT::bc5_snorm, 5, 9), 2u * 3 * 16);
    EXPECT_EQ(encoded_bytes(FORMAT::bc1, 0, 4), std::nullopt);
    EXPECT_EQ(encoded_bytes(FORMAT::bc7, huge, huge), std::nullopt);
}

TEST(encode, edges_repeat) {
    for (auto const& [width, height] : {std::pair{1u, 1u}, {2u, 7u}, {69u, 3u}}) {
        BYTES const image = checks::mixed_image(width, height, true);
        for (FORMAT const format : batch_formats) {
            EXPECT_EQ(encode(format, image, {}), encode(format, image.padded(), {})) << width << " x " << height;
        }
    }
}

TEST(encode, bytes_do_not_depend_on_rows_or_threads) {
    BYTES const image = checks::mixed_image(37, 41, true);
    for (FORMAT const format :
         {FORMAT::bc1, FORMAT::bc2, FORMAT::bc3, FORMAT::bc5_unorm, FORMAT::bc6h_uf16, FORMAT::bc7}) {
        ENCODE_OPTIONS const options = {.effort = EFFORT::fast};
        auto const expected = encode(format, image, options);
        EXPECT_EQ(encode(format, image, options, 3), expected);
        std::size_t const row_bytes = 10 * bytes_per_block(format);
        std::vector<std::uint8_t> rows(expected.size());
        for (std::uint32_t row = 0; row < 11; ++row) {
            ASSERT_TRUE(encode_rows(format, image.view(), options, row, 1,
                                    std::span(rows).subspan(row * row_bytes, row_bytes)));
        }
        EXPECT_EQ(rows, expected);
    }
}

TEST(encode, bytes_do_not_depend_on_the_instruction_set) {
    // Flat, black, transparent and busy blocks side by side, in numbers that leave lanes over.
    BYTES image = checks::mixed_image(76, 24, true);
    for (std::uint32_t y = 0; y < 8; ++y) {
        for (std::uint32_t x = 0; x < 40; ++x) {
            std::uint8_t const level = static_cast<std::uint8_t>(x / 8 * 60);
            std::fill_n(image.at(x, y), 4, level);
        }
    }
    for (FORMAT const format : batch_formats) {
        for (EFFORT const effort : efforts) {
            for (bool const extras : {false, true}) {
                ENCODE_OPTIONS const options = {effort, extras, extras, 100};
                checks::expect_same_on_all_targets([&] { return encode(format, image, options); });
            }
        }
    }
}

/// The least error with which two parts of one 5- or 6-bit value and one part of another come near `value`.
int nearest_mixture(int value, int bits) {
    int best = 255;
    auto const widen = [=](int grid) {
        return bits == 5 ? grid << 3 | grid >> 2 : grid << 2 | grid >> 4;
    };
    for (int a = 0; a < 1 << bits; ++a) {
        for (int b = 0; b < 1 << bits; ++b) {
            best = std::min(best, std::abs((2 * widen(a) + widen(b) + 1) / 3 - value));
        }
    }
    return best;
}

TEST(encode_colour, one_colour_comes_as_near_as_the_format_can) {
    BYTES image(256 * 4, 4);
    for (std::uint32_t x = 0; x < image.width; ++x) {
        for (std::uint32_t y = 0; y < 4; ++y) {
            auto const value = static_cast<std::uint8_t>(x / 4);
            std::uint8_t const texel[4] = {value, static_cast<std::uint8_t>(255 - value),
                                           static_cast<std::uint8_t>(value ^ 0x5A), value};
            std::copy_n(texel, 4, image.at(x, y));
        }
    }
    for (EFFORT const effort : efforts) {
        for (FORMAT const format : {FORMAT::bc1, FORMAT::bc3}) {
            BYTES const decoded = round_trip(format, image, {.effort = effort});
            for (std::uint32_t x = 0; x < image.width; ++x) {
                int error = 0;
                int least = 0;
                for (int c = 0; c < 3; ++c) {
                    int const difference = decoded.at(x, 3)[c] - image.at(x, 3)[c];
                    int const nearest = nearest_mixture(image.at(x, 3)[c], c == 1 ? 6 : 5);
                    error += difference * difference;
                    least += nearest * nearest;
                }
                // Half way between two colours may be nearer than any third, and then round the wrong way.
                EXPECT_LE(error, least + (format == FORMAT::bc1 ? 1 : 0)) << "value " << x / 4;
                if (format == FORMAT::bc3) {
                    EXPECT_EQ(decoded.at(x, 3)[3], image.at(x, 3)[3]);
                }
            }
        }
    }
}

TEST(encode_colour, palette_colours_are_exact) {
    // Red to blue in thirds: what the block holds is what a decoder makes of it.
    constexpr std::uint8_t palette[4][3] = {{255, 0, 0}, {170, 0, 85}, {85, 0, 170}, {0, 0, 255}};
    BYTES image = filled(4, 4, {0, 0, 0, 255});
    for (std::size_t i = 0; i < 16; ++i) {
        std::copy_n(palette[i * 7 % 4], 3, &image.texels[i * 4]);
    }
    for (EFFORT const effort : efforts) {
        EXPECT_EQ(round_trip(FORMAT::bc1, image, {.effort = effort}).texels, image.texels);
        EXPECT_EQ(round_trip(FORMAT::bc2, image, {.effort = effort}).texels, image.texels);
    }
}

TEST(encode_colour, bc1_alpha_is_as_asked) {
    BYTES image = checks::mixed_image(64, 32, true);
    for (std::uint32_t x = 0; x < 16; ++x) {
        for (std::uint32_t y = 0; y < 8; ++y) {
            image.at(x, y)[3] = 0;
        }
    }
    for (EFFORT const effort : efforts) {
        for (std::uint8_t const threshold : {1, 128, 255}) {
            BYTES const decoded =
                round_trip(FORMAT::bc1, image, {.effort = effort, .one_bit_alpha = true, .alpha_threshold = threshold});
            for (std::size_t i = 0; i < image.texels.size(); i += 4) {
                bool const opaque = image.texels[i + 3] >= threshold;
                ASSERT_EQ(decoded.texels[i + 3], opaque ? 255 : 0);
                if (!opaque) {
                    ASSERT_EQ(decoded.texels[i] + decoded.texels[i + 1] + decoded.texels[i + 2], 0);
                }
            }
        }
        // Unasked for, nothing may become transparent: not hidden texels, and not black ones.
        BYTES const decoded = round_trip(FORMAT::bc1, image, {.effort = effort});
        for (std::size_t i = 3; i < decoded.texels.size(); i += 4) {
            ASSERT_EQ(decoded.texels[i], 255);
        }
    }
    std::vector<std::uint8_t> const transparent = {0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(encode(FORMAT::bc1, filled(4, 4, {9, 99, 200, 0}), {.one_bit_alpha = true}), transparent);
}

TEST(encode_colour, transparent_texels_do_not_count) {
    // Half a block of one colour: what hides under the other half must not draw the endpoints away.
    BYTES image = filled(4, 4, {132, 130, 132, 255});
    for (std::size_t i = 0; i < 32; i += 4) {
        image.texels[i] = static_cast<std::uint8_t>(i * 8);
        image.texels[i + 3] = 0;
    }
    for (EFFORT const effort : efforts) {
        BYTES const decoded = round_trip(FORMAT::bc1, image, {.effort = effort, .one_bit_alpha = true});
        for (std::size_t i = 32; i < 64; ++i) {
            EXPECT_EQ(decoded.texels[i], image.texels[i]) << i;
        }
    }
}

TEST(encode_colour, perceptual_weights_help_luma) {
    BYTES const image = checks::mixed_image(64, 64, false);
    std::array<double, 4> const luma = {0.2126, 0.7152, 0.0722, 0};
    for (EFFORT const effort : efforts) {
        BYTES const plain = round_trip(FORMAT::bc1, image, {.effort = effort});
        BYTES const weighted = round_trip(FORMAT::bc1, image, {.effort = effort, .perceptual = true});
        EXPECT_LT(mean_error(image, weighted, luma), mean_error(image, plain, luma));
    }
}

TEST(encode_alpha, bc2_takes_the_nearest) {
    BYTES image(4 * 64, 4);
    for (std::size_t i = 0; i < image.texels.size() / 4; ++i) {
        image.texels[i * 4 + 3] = static_cast<std::uint8_t>(i);
    }
    BYTES const decoded = round_trip(FORMAT::bc2, image, {});
    for (std::size_t i = 3; i < image.texels.size(); i += 4) {
        ASSERT_LE(std::abs(decoded.texels[i] - image.texels[i]), 8);
    }
}

struct EXACT_VALUES {
    char const* what;
    std::array<std::uint8_t, 16> values;
};

TEST(encode_channel, what_a_palette_holds_is_exact) {
    constexpr EXACT_VALUES blocks[] = {
        {"lowest", {}},
        {"eight steps", {30, 37, 44, 51, 58, 65, 72, 79, 79, 30, 37, 44, 51, 58, 65, 72}},
        {"six steps and both ends", {0, 255, 100, 105, 110, 115, 120, 125, 0, 255, 125, 100, 0, 0, 255, 255}},
        {"only the ends", {0, 255, 255, 0, 0, 255, 255, 0, 255, 0, 0, 0, 255, 255, 0, 0}},
        {"one above the rest", {7, 7, 7, 7, 7, 7, 7, 7, 8, 7, 7, 7, 7, 7, 7, 7}},
        {"ends and one between", {0, 0, 0, 0, 255, 255, 255, 255, 77, 77, 77, 77, 0, 255, 77, 77}},
    };
    for (auto const& [what, values] : blocks) {
        BYTES image(4, 4);
        for (std::size_t i = 0; i < 16; ++i) {
            image.texels[i * 4] = image.texels[i * 4 + 3] = values[i];
            image.texels[i * 4 + 1] = static_cast<std::uint8_t>(255 - values[i]);
        }
        for (EFFORT const effort : efforts) {
            BYTES const bc3 = round_trip(FORMAT::bc3, image, {.effort = effort});
            BYTES const bc5 = round_trip(FORMAT::bc5_unorm, image, {.effort = effort});
            for (std::size_t i = 0; i < 64; i += 4) {
                EXPECT_EQ(bc3.texels[i + 3], image.texels[i + 3]) << what;
                EXPECT_EQ(bc5.texels[i], image.texels[i]) << what;
                EXPECT_EQ(bc5.texels[i + 1], image.texels[i + 1]) << what;
            }
        }
    }
}

TEST(encode_channel, every_signed_level_comes_back) {
    for (int value = 0; value < 256; ++value) {
        auto const level = static_cast<std::uint8_t>(value);
        std::vector<float> decoded(64);
        ASSERT_TRUE(decode_image_rgba32f(
            FORMAT::bc4_snorm, encode(FORMAT::bc4_snorm, filled(4, 4, {level, 0, 0, 255}), {}), 4, 4, decoded));
        EXPECT_NEAR(decoded[0], value / 127.5 - 1, 0.5 / 127 + 1e-6);
        if (value == 0 || value == 255) {
            EXPECT_EQ(decoded[0], value == 0 ? -1 : 1);
        }
    }
}

}  // namespace
