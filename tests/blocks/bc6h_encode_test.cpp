// The BC6H encoder: exactness where the format allows it, values that the format does not know, error floors, and the
// same bytes from every instruction set and every division into rows.
#include <cmath>
#include <cstring>

#include "blocks/bc6h_code.hpp"
#include "blocks/bc7_tables.hpp"
#include "blocks/decode_bc6h.hpp"
#include "blocks/encode_bc6h.hpp"
#include "encoder_checks.hpp"

namespace {

using blocks::EFFORT;
using blocks::ENCODE_OPTIONS;
using checks::BYTES;
using checks::HALVES;

constexpr EFFORT efforts[] = {EFFORT::fast, EFFORT::normal, EFFORT::best};

double value_of(std::uint16_t half) {
    int const exponent = (half >> 10) & 31;
    int const mantissa = half & 1023;
    double const size = exponent ? std::ldexp(1024 + mantissa, exponent - 25) : std::ldexp(mantissa, -24);
    return half & 0x8000 ? -size : size;
}

/// Place on a scale that runs evenly through all halves of both signs.
int rank_of(std::uint16_t half) {
    return half & 0x8000 ? -(half & 0x7FFF) : half;
}

template <class IMAGE>
std::vector<std::uint8_t> encode(IMAGE const& image, bool is_signed, ENCODE_OPTIONS const& options) {
    std::vector<std::uint8_t> out(image.block_count() * 16);
    blocks::encode_bc6h_rows(image.view(), is_signed, options, 0, blocks::blocks_across(image.height), out.data());
    return out;
}

HALVES decode(std::vector<std::uint8_t> const& code, bool is_signed, std::uint32_t width, std::uint32_t height) {
    HALVES image(width, height);
    std::uint32_t const across = blocks::blocks_across(width);
    for (std::uint32_t block = 0; block < code.size() / 16; ++block) {
        std::uint16_t rgb[16][3];
        blocks::decode_bc6h(&code[block * 16], is_signed, rgb);
        for (std::uint32_t t = 0; t < 16; ++t) {
            std::uint32_t const x = block % across * 4 + t % 4;
            std::uint32_t const y = block / across * 4 + t / 4;
            if (x < width && y < height)
                std::memcpy(image.at(x, y), rgb[t], sizeof rgb[t]);
        }
    }
    return image;
}

/// Values that change over many powers of two, with a hard edge and grain.
HALVES bright_image(std::uint32_t width, std::uint32_t height, bool is_signed) {
    HALVES image(width, height);
    std::mt19937 random(77);
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) {
            std::uint32_t const edge = (x + 3 * y) % 29 < 9 ? 4000 : 0;
            std::uint32_t const grain = random() % 64;
            std::uint32_t const size[3] = {3000 + 150 * x + grain, 9000 + edge + 20 * y + grain,
                                           12000 + 40 * (x ^ y) + 2 * edge};
            for (std::size_t c = 0; c < 3; ++c) {
                bool const negative = is_signed && (x / 11 + y / 7 + c) % 3 == 0;
                image.at(x, y)[c] = static_cast<std::uint16_t>(size[c] | (negative ? 0x8000u : 0u));
            }
            image.at(x, y)[3] = 0x3C00;
        }
    return image;
}

TEST(bc6h_encode, blocks_of_one_colour_are_exact) {
    for (bool const is_signed : {false, true}) {
        HALVES image(4 * 331, 4);
        for (std::uint32_t x = 0; x < image.width; ++x)
            for (std::uint32_t y = 0; y < 4; ++y) {
                std::uint32_t const v = std::min(x / 4 * 97, 0x7BFFu);
                std::uint32_t const sign = is_signed && x / 4 % 2 && v ? 0x8000u : 0u;
                std::uint16_t const texel[4] = {static_cast<std::uint16_t>(v | sign),
                                                static_cast<std::uint16_t>(0x7BFF - v),
                                                static_cast<std::uint16_t>((v * 5) % 0x7C00), 0};
                std::memcpy(image.at(x, y), texel, sizeof texel);
            }
        EXPECT_EQ(decode(encode(image, is_signed, {}), is_signed, image.width, 4).texels, image.texels);
    }
}

TEST(bc6h_encode, infinities_and_what_is_not_a_number_never_reach_the_output) {
    struct CASE {
        std::uint16_t given, as_signed, as_unsigned;
    };
    CASE const cases[] = {{0x7C00, 0x7BFF, 0x7BFF}, {0xFC00, 0xFBFF, 0}, {0x7E00, 0, 0}, {0xFFFF, 0, 0},
                          {0x8000, 0, 0},           {0xC000, 0xC000, 0}, {0x0001, 1, 1}, {0x7BFF, 0x7BFF, 0x7BFF}};
    for (bool const is_signed : {false, true}) {
        HALVES given = bright_image(32, 8, is_signed);
        HALVES tame = given;
        for (std::uint32_t i = 0; i < 24; ++i) {
            CASE const& c = cases[i % 8];
            given.at(i + 3, i % 7)[i % 3] = c.given;
            tame.at(i + 3, i % 7)[i % 3] = is_signed ? c.as_signed : c.as_unsigned;
        }
        std::vector<std::uint8_t> const code = encode(given, is_signed, {});
        EXPECT_EQ(code, encode(tame, is_signed, {}));
        for (std::uint16_t const half : decode(code, is_signed, 32, 8).texels)
            EXPECT_LT(half & 0x7FFF, 0x7C00);
    }
}

TEST(bc6h_encode, bytes_count_as_the_halves_nearest_to_them) {
    std::vector<std::uint16_t> nearest(256);
    for (std::size_t v = 0; v < 256; ++v)
        for (std::uint16_t half = 0; half <= 0x3C00; ++half)
            if (std::abs(value_of(half) * 255 - static_cast<double>(v)) <
                std::abs(value_of(nearest[v]) * 255 - static_cast<double>(v)))
                nearest[v] = half;
    BYTES const bytes = checks::mixed_image(64, 32, false);
    HALVES halves(64, 32);
    for (std::size_t i = 0; i < bytes.texels.size(); ++i)
        halves.texels[i] = nearest[bytes.texels[i]];
    EXPECT_EQ(encode(bytes, false, {}), encode(halves, false, {}));
}

TEST(bc6h_encode, error_falls_with_effort_and_stays_below_limits) {
    for (bool const is_signed : {false, true}) {
        HALVES const image = bright_image(64, 64, is_signed);
        double before = 1e30;
        for (std::size_t i = 0; i < 3; ++i) {
            HALVES const decoded = decode(encode(image, is_signed, {.effort = efforts[i]}), is_signed, 64, 64);
            double sum = 0;
            for (std::size_t k = 0; k < image.texels.size(); ++k)
                if (k % 4 != 3)
                    sum += std::pow(rank_of(image.texels[k]) - rank_of(decoded.texels[k]), 2);
            double const error = std::sqrt(sum / (64 * 64 * 3));
            EXPECT_LE(error, is_signed ? 325 : 80) << "effort " << i;
            EXPECT_LE(error, before) << "effort " << i;
            before = error;
        }
    }
}

TEST(bc6h_encode, edges_and_rows) {
    std::uint32_t const sides[][2] = {{1, 1}, {3, 2}, {5, 4}, {4, 7}, {9, 6}, {52, 28}};
    for (auto const [width, height] : sides) {
        HALVES const image = bright_image(width, height, true);
        std::vector<std::uint8_t> const whole = encode(image, true, {});
        EXPECT_EQ(whole, encode(image.padded(), true, {})) << width << " x " << height;
        std::vector<std::uint8_t> pieces(whole.size());
        std::size_t const row_bytes = std::size_t{blocks::blocks_across(width)} * 16;
        for (std::uint32_t row = 0; row < blocks::blocks_across(height); ++row)
            blocks::encode_bc6h_rows(image.view(), true, {}, row, 1, pieces.data() + row * row_bytes);
        EXPECT_EQ(pieces, whole) << width << " x " << height;
    }
}

TEST(bc6h_encode, all_instruction_sets_give_the_same_bytes) {
    for (EFFORT const effort : efforts)
        for (bool const is_signed : {false, true}) {
            HALVES const image = bright_image(effort == EFFORT::best ? 44 : 132, 20, is_signed);
            checks::expect_same_on_all_targets(
                [&] { return encode(image, is_signed, {.effort = effort, .perceptual = is_signed}); });
        }
}

/// Random codes, written as a block and decoded again, must give the halves that they stand for.
TEST(bc6h_code, what_is_written_is_what_is_decoded) {
    std::mt19937 random(3);
    for (std::uint8_t m = 0; m < blocks::bc6h_modes.size(); ++m)
        for (std::uint8_t partition = 0; partition < 32; ++partition) {
            blocks::BC6H_MODE const& mode = blocks::bc6h_modes[m];
            blocks::BC6H_CODE code;
            code.mode = m;
            code.partition = mode.subsets == 2 ? partition : 0;
            for (std::uint32_t c = 0; c < 3; ++c) {
                std::int32_t const range = 1 << mode.endpoint_bits;
                auto const any = [&](std::int32_t below) {
                    return static_cast<std::int32_t>(random() % below);
                };
                code.end[0][c] = any(range);
                for (std::uint32_t e = 1; e < 2u * mode.subsets; ++e) {
                    std::int32_t const reach = 1 << (mode.delta_bits[c] - 1);
                    std::int32_t const moved = code.end[0][c] + any(2 * reach) - reach;
                    code.end[e][c] = mode.transformed ? std::clamp(moved, 0, range - 1) : any(range);
                }
            }
            std::uint32_t const index_bits = mode.subsets == 2 ? 3 : 4;
            for (std::size_t t = 0; t < 16; ++t)
                code.index[t] = static_cast<std::uint8_t>(random() % (t ? 1u << index_bits : 1u << (index_bits - 1)));
            std::uint8_t block[16];
            blocks::write_bc6h(code, block);
            std::uint16_t rgb[16][3];
            blocks::decode_bc6h(block, false, rgb);
            for (std::uint32_t t = 0; t < 16; ++t) {
                std::uint32_t const s = blocks::subset_of(mode.subsets, code.partition, t);
                for (std::size_t c = 0; c < 3; ++c) {
                    auto const widen = [&](std::int32_t q) {
                        std::int32_t const bits = mode.endpoint_bits;
                        if (bits == 16 || q == 0)
                            return q;
                        return q == (1 << bits) - 1 ? 0xFFFF : ((2 * q + 1) << (15 - bits));
                    };
                    std::int32_t const v = blocks::interpolate(widen(code.end[2 * s][c]), widen(code.end[2 * s + 1][c]),
                                                               blocks::interpolation_weight(code.index[t], index_bits));
                    ASSERT_EQ(rgb[t][c], v * 31 / 64) << "mode " << +mode.code << " partition " << +partition;
                }
            }
        }
}

}  // namespace
