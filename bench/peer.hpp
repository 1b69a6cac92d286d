// The main function that all compared encoders share, so that they are timed alike. An encoder is a program of its own
// because some of the libraries export the same symbols.
//
//   peer_NAME                      prints a line "FORMAT SETTING" for each thing it can do
//   peer_NAME FORMAT SETTING IN OUT   encodes the squares of IN into OUT, prints the least seconds of several runs
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

struct PEER_ENCODER {
    std::string format;
    std::string setting;
    /// Encodes one square of crop_side texels; `out` has room for its blocks.
    std::function<void(std::uint8_t const* rgba, std::uint8_t* out)> encode;
};

int run_peer(int argc, char** argv, std::span<PEER_ENCODER const> encoders);

/// Gathers the texels of block number `block` of a square, for libraries that take single blocks.
void copy_block(std::uint8_t const* rgba, int block, std::uint8_t (&texels)[16][4]);

inline constexpr int blocks_in_square = 64 * 64;
