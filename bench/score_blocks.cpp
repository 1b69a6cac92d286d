// Decodes the blocks that an encoder made of the squares and prints four numbers: the PSNR of the coded colour channels
// as the mean over squares and pooled, and the same of alpha where the format has one ("-" where not). Every encoder is
// scored by the same decoder.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string_view>
#include <vector>

#include "bench/crop_side.hpp"
#include "bench/format_names.hpp"
#include "blocks/decode.hpp"

namespace {

std::vector<std::uint8_t> read_file(char const* path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

struct SCORE {
    double sum_of_psnr = 0;
    double sum_of_mse = 0;
    int squares = 0;

    void add(double mse) {
        // A square without any error counts as one with a single error of 1, so that the mean stays finite.
        sum_of_psnr += psnr(std::max(mse, 1.0 / (crop_side * crop_side)));
        sum_of_mse += mse;
        ++squares;
    }

    static double psnr(double mse) { return 10 * std::log10(255.0 * 255.0 / mse); }

    void print() const { std::printf("%.3f %.3f", sum_of_psnr / squares, psnr(sum_of_mse / squares)); }
};

double mean_squared_error(std::uint8_t const* a, std::uint8_t const* b, int first_channel, int channels) {
    double sum = 0;
    for (std::size_t i = 0; i < crop_bytes; i += 4) {
        for (int c = first_channel; c < first_channel + channels; ++c) {
            double const difference = double(a[i + c]) - double(b[i + c]);
            sum += difference * difference;
        }
    }
    return sum / (double(crop_side) * crop_side * channels);
}

/// Makes the colours of transparent texels those of the original, so that only the opaque ones count. False if other
/// texels are transparent than should be.
bool hide_transparent(std::uint8_t const* original, std::vector<std::uint8_t>& decoded) {
    for (std::size_t i = 0; i < crop_bytes; i += 4) {
        bool const transparent = original[i + 3] < 128;
        if ((decoded[i + 3] == 0) != transparent) {
            return false;
        }
        if (transparent) {
            std::copy_n(original + i, 4, &decoded[i]);
        }
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    auto const format = argc == 4 ? format_named(argv[1]) : std::nullopt;
    if (!format) {
        std::cerr << "usage: score_blocks FORMAT IN.rgba BLOCKS\n";
        return 2;
    }
    auto const texels = read_file(argv[2]);
    auto const encoded = read_file(argv[3]);
    std::size_t const squares = texels.size() / crop_bytes;
    std::size_t const block_bytes = 64 * 64 * blocks::bytes_per_block(*format);
    if (squares == 0 || encoded.size() != squares * block_bytes) {
        std::cerr << argv[3] << ": wrong size\n";
        return 1;
    }
    using enum blocks::FORMAT;
    bool const one_channel = *format == bc4_unorm || *format == bc4_snorm;
    bool const two_channels = *format == bc5_unorm || *format == bc5_snorm;
    bool const one_bit_alpha = std::string_view(argv[1]) == "bc1a";
    bool const has_alpha = *format == bc2 || *format == bc3 || *format == bc7;
    SCORE colour, alpha;
    std::vector<std::uint8_t> decoded(crop_bytes);
    for (std::size_t square = 0; square < squares; ++square) {
        std::uint8_t const* original = &texels[square * crop_bytes];
        std::span<std::uint8_t const> const blocks(&encoded[square * block_bytes], block_bytes);
        if (!blocks::decode_image_rgba8(*format, blocks, crop_side, crop_side, decoded)) {
            return 1;
        }
        if (one_bit_alpha && !hide_transparent(original, decoded)) {
            std::cerr << "alpha is not as it should be\n";
            return 1;
        }
        colour.add(mean_squared_error(original, decoded.data(), 0, one_channel ? 1 : two_channels ? 2 : 3));
        alpha.add(mean_squared_error(original, decoded.data(), 3, 1));
    }
    colour.print();
    if (has_alpha) {
        std::printf(" ");
        alpha.print();
    } else {
        std::printf(" - -");
    }
    std::printf("\n");
    return 0;
}
