// libsquish: range fit and cluster fit.
#include <squish.h>

#include "bench/peer.hpp"

int main(int argc, char** argv) {
    constexpr std::pair<char const*, int> fits[] = {{"range", squish::kColourRangeFit},
                                                    {"cluster", squish::kColourClusterFit}};
    struct KIND {
        char const* format;
        int kind;
        bool alpha;
    };
    std::vector<PEER_ENCODER> encoders;
    for (auto const [format, kind, alpha] :
         {KIND{"bc1", squish::kDxt1, false}, KIND{"bc1a", squish::kDxt1, true}, KIND{"bc3", squish::kDxt5, true}}) {
        for (auto const& [name, fit] : fits) {
            int const flags = kind | fit;
            std::size_t const bytes = kind == squish::kDxt1 ? 8 : 16;
            encoders.push_back({format, name, [=](std::uint8_t const* rgba, std::uint8_t* out) {
                                    for (int block = 0; block < blocks_in_square; ++block) {
                                        std::uint8_t texels[16][4];
                                        copy_block(rgba, block, texels);
                                        for (auto& texel : texels) {
                                            // In DXT1 it makes transparent texels out of a low alpha.
                                            texel[3] = alpha ? texel[3] : 255;
                                        }
                                        squish::Compress(texels[0], out, flags);
                                        out += bytes;
                                    }
                                }});
        }
    }
    return run_peer(argc, argv, encoders);
}
