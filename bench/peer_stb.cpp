// stb_dxt: range fit and one round of least squares.
#include <cstdlib>
#include <cstring>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wundef"
#define STB_DXT_IMPLEMENTATION
#include <stb_dxt.h>
#pragma GCC diagnostic pop

#include "bench/peer.hpp"

int main(int argc, char** argv) {
    std::vector<PEER_ENCODER> encoders;
    for (int const mode : {STB_DXT_NORMAL, STB_DXT_HIGHQUAL}) {
        for (int const alpha : {0, 1}) {
            encoders.push_back({alpha == 0 ? "bc1" : "bc3", mode == STB_DXT_NORMAL ? "normal" : "high",
                                [=](std::uint8_t const* rgba, std::uint8_t* out) {
                                    for (int block = 0; block < blocks_in_square; ++block) {
                                        std::uint8_t texels[16][4];
                                        copy_block(rgba, block, texels);
                                        stb_compress_dxt_block(out, texels[0], alpha, mode);
                                        out += alpha == 0 ? 8 : 16;
                                    }
                                }});
        }
    }
    for (int const channels : {1, 2}) {
        encoders.push_back({channels == 1 ? "bc4" : "bc5", "only", [=](std::uint8_t const* rgba, std::uint8_t* out) {
                                for (int block = 0; block < blocks_in_square; ++block) {
                                    std::uint8_t texels[16][4];
                                    copy_block(rgba, block, texels);
                                    std::uint8_t values[32];
                                    for (int i = 0; i < 16; ++i) {
                                        for (int c = 0; c < channels; ++c) {
                                            values[i * channels + c] = texels[i][c];
                                        }
                                    }
                                    if (channels == 1) {
                                        stb_compress_bc4_block(out, values);
                                    } else {
                                        stb_compress_bc5_block(out, values);
                                    }
                                    out += 8 * channels;
                                }
                            }});
    }
    return run_peer(argc, argv, encoders);
}
