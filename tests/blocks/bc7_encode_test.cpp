// The BC7 encoder: exactness where the format allows it, image edges, and the same bytes from every instruction set and
// every division into rows.
#include <array>
#include <cmath>
#include <cstring>

#include "blocks/decode_bc7.hpp"
#include "blocks/encode_bc7.hpp"
#include "encoder_checks.hpp"

namespace {

using blocks::EFFORT;
using blocks::ENCODE_OPTIONS;
using checks::BYTES;

constexpr EFFORT efforts[] = {EFFORT::fast, EFFORT::normal, EFFORT::best};

std::vector<std::uint8_t> encode(BYTES const& image, ENCODE_OPTIONS const& options) {
    std::vector<std::uint8_t> out(image.block_count() * 16);
    blocks::encode_bc7_rows(image.view(), options, 0, blocks::blocks_across(image.height), out.data());
    return out;
}

BYTES decode(std::vector<std::uint8_t> const& code, std::uint32_t width, std::uint32_t height) {
    BYTES image(width, height);
    std::uint32_t const across = blocks::blocks_across(width);
    for (std::uint32_t block = 0; block < code.size() / 16; ++block) {
        std::uint8_t rgba[16][4];
        blocks::decode_bc7(&code[block * 16], rgba);
        for (std::uint32_t t = 0; t < 16; ++t) {
            std::uint32_t const x = block % across * 4 + t % 4;
            std::uint32_t const y = block / across * 4 + t / 4;
            if (x < width && y < height)
                std::memcpy(image.at(x, y), rgba[t], 4);
        }
    }
    return image;
}

/// Squared error per value, each channel counted `weight` times.
double mean_error(BYTES const& a, BYTES const& b, std::array<double, 4> const& weight) {
    double sum = 0;
    for (std::size_t i = 0; i < a.texels.size(); ++i) {
        double const d = a.texels[i] - b.texels[i];
        sum += d * d * weight[i % 4];
    }
    return sum / static_cast<double>(a.texels.size());
}

TEST(bc7_encode, blocks_of_one_colour_are_exact) {
    BYTES image(4 * 256, 4);
    for (std::uint32_t x = 0; x < image.width; ++x)
        for (std::uint32_t y = 0; y < 4; ++y) {
            auto const v = static_cast<std::uint8_t>(x / 4);
            std::uint8_t const texel[4] = {v, static_cast<std::uint8_t>(255 - v), static_cast<std::uint8_t>(v ^ 0x5A),
                                           static_cast<std::uint8_t>(v * 7)};
            std::memcpy(image.at(x, y), texel, 4);
        }
    EXPECT_EQ(decode(encode(image, {}), image.width, 4).texels, image.texels);
}

TEST(bc7_encode, alpha_of_255_or_0_throughout_stays) {
    for (EFFORT const effort : efforts)
        for (std::uint8_t const alpha : {255, 0}) {
            BYTES image = checks::mixed_image(64, 32, false);
            for (std::size_t i = 3; i < image.texels.size(); i += 4)
                image.texels[i] = alpha;
            BYTES const decoded = decode(encode(image, {.effort = effort}), 64, 32);
            for (std::size_t i = 3; i < decoded.texels.size(); i += 4)
                ASSERT_EQ(decoded.texels[i], alpha);
        }
}

TEST(bc7_encode, perceptual_weights_pay_in_their_own_measure) {
    BYTES const image = checks::mixed_image(64, 64, false);
    std::array<double, 4> const luminance = {0.2126, 0.7152, 0.0722, 0};
    double const equal = mean_error(image, decode(encode(image, {}), 64, 64), luminance);
    double const weighted = mean_error(image, decode(encode(image, {.perceptual = true}), 64, 64), luminance);
    EXPECT_LT(weighted, 0.9 * equal);
}

TEST(bc7_encode, sides_that_are_no_multiple_of_four_repeat_the_last_texels) {
    std::uint32_t const sides[][2] = {{1, 1}, {2, 3}, {5, 4}, {4, 7}, {9, 6}};
    for (auto const [width, height] : sides) {
        BYTES const image = checks::mixed_image(width, height, true);
        EXPECT_EQ(encode(image, {}), encode(image.padded(), {})) << width << " x " << height;
    }
}

TEST(bc7_encode, rows_can_be_encoded_apart) {
    BYTES const image = checks::mixed_image(52, 28, true);
    std::vector<std::uint8_t> const whole = encode(image, {});
    std::size_t const row_bytes = 13 * 16;
    for (std::uint32_t row = 0; row < 7; row += 3) {
        std::uint32_t const count = std::min(3u, 7 - row);
        std::vector<std::uint8_t> part(count * row_bytes);
        blocks::encode_bc7_rows(image.view(), {}, row, count, part.data());
        EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin() + static_cast<std::ptrdiff_t>(row * row_bytes)));
    }
}

TEST(bc7_encode, all_instruction_sets_give_the_same_bytes) {
    for (EFFORT const effort : efforts)
        for (bool const alpha : {false, true}) {
            BYTES const image = checks::mixed_image(effort == EFFORT::best ? 44 : 132, 28, alpha);
            checks::expect_same_on_all_targets([&] { return encode(image, {.effort = effort, .perceptual = alpha}); });
        }
}

}  // namespace
