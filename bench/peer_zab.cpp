// This project's own encoders, one thread.
#include <string_view>

#include "bench/crop_side.hpp"
#include "bench/format_names.hpp"
#include "bench/peer.hpp"
#include "blocks/encode.hpp"

int main(int argc, char** argv) {
    std::vector<PEER_ENCODER> encoders;
    constexpr std::pair<char const*, blocks::EFFORT> efforts[] = {
        {"fast", blocks::EFFORT::fast}, {"normal", blocks::EFFORT::normal}, {"best", blocks::EFFORT::best}};
    for (char const* format : {"bc1", "bc1a", "bc3", "bc4", "bc4_snorm", "bc5", "bc5_snorm", "bc6h", "bc7"}) {
        for (auto const& [name, effort] : efforts) {
            blocks::ENCODE_OPTIONS options;
            options.effort = effort;
            options.one_bit_alpha = std::string_view(format) == "bc1a";
            encoders.push_back({format, name, [=, number = *format_named(format)](std::uint8_t const* rgba, auto* out) {
                                    blocks::RGBA8_VIEW const view = {rgba, crop_side, crop_side, crop_side * 4};
                                    std::size_t const bytes = *blocks::encoded_bytes(number, crop_side, crop_side);
                                    blocks::encode_image(number, view, options, 1, {out, bytes});
                                }});
        }
    }
    return run_peer(argc, argv, encoders);
}
