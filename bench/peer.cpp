#include "bench/peer.hpp"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>

#include "bench/crop_side.hpp"
#include "bench/format_names.hpp"

namespace {

constexpr double least_seconds = 0.3;
constexpr int most_runs = 20;

int encode_file(PEER_ENCODER const& encoder, char const* in_path, char const* out_path) {
    std::ifstream in(in_path, std::ios::binary);
    std::vector<char> const texels{std::istreambuf_iterator<char>(in), {}};
    auto const format = format_named(encoder.format);
    if (!format || texels.empty() || texels.size() % crop_bytes != 0) {
        std::cerr << in_path << ": not a file of squares\n";
        return 1;
    }
    std::size_t const squares = texels.size() / crop_bytes;
    std::size_t const bytes = blocks_in_square * blocks::bytes_per_block(*format);
    std::vector<std::uint8_t> out(squares * bytes);
    double best = 1e30;
    double total = 0;
    for (int run = 0; run < most_runs && (run < 1 || total < least_seconds); ++run) {
        auto const start = std::chrono::steady_clock::now();
        for (std::size_t square = 0; square < squares; ++square) {
            auto const* rgba = reinterpret_cast<std::uint8_t const*>(texels.data()) + square * crop_bytes;
            encoder.encode(rgba, out.data() + square * bytes);
        }
        double const seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        best = std::min(best, seconds);
        total += seconds;
    }
    std::cout << best << '\n';
    std::ofstream file(out_path, std::ios::binary);
    file.write(reinterpret_cast<char const*>(out.data()), static_cast<std::streamsize>(out.size()));
    return file.good() ? 0 : 1;
}

}  // namespace

int run_peer(int argc, char** argv, std::span<PEER_ENCODER const> encoders) {
    if (argc == 1) {
        for (PEER_ENCODER const& encoder : encoders) {
            std::cout << encoder.format << ' ' << encoder.setting << '\n';
        }
        return 0;
    }
    if (argc == 5) {
        for (PEER_ENCODER const& encoder : encoders) {
            if (encoder.format == argv[1] && encoder.setting == argv[2]) {
                return encode_file(encoder, argv[3], argv[4]);
            }
        }
    }
    std::cerr << "usage: " << argv[0] << " [FORMAT SETTING IN.rgba OUT.blocks]\n";
    return 2;
}

void copy_block(std::uint8_t const* rgba, int block, std::uint8_t (&texels)[16][4]) {
    int const x = block % 64 * 4;
    int const y = block / 64 * 4;
    for (int row = 0; row < 4; ++row) {
        std::memcpy(texels[row * 4], rgba + (std::size_t(y + row) * crop_side + x) * 4, 16);
    }
}
