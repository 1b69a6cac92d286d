// Block decoders: any format, any sides, any bits. The first three bytes say which, the rest is blocks.
#include "blocks/decode.hpp"
#include "fuzz/fuzz_input.hpp"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    if (size < 3) {
        return 0;
    }
    auto const format = static_cast<blocks::FORMAT>(bytes[0] % 10);
    std::uint32_t const width = bytes[1] % 33;
    std::uint32_t const height = bytes[2] % 33;
    // Of their own, so that one byte too far is seen.
    std::vector<std::uint8_t> const coded(bytes + 3, bytes + size);
    std::size_t const texels = std::size_t{width} * height;
    std::size_t const needed =
        std::size_t{blocks::blocks_across(width)} * blocks::blocks_across(height) * blocks::bytes_per_block(format);
    bool const can_be_decoded = texels > 0 && coded.size() >= needed;

    std::vector<std::uint8_t> rgba(4 * texels);
    fuzz::require(blocks::decode_image_rgba8(format, coded, width, height, rgba) == can_be_decoded,
                  "all blocks of a whole image are decoded, and no others");
    std::vector<float> floats(4 * texels);
    fuzz::require(blocks::decode_image_rgba32f(format, coded, width, height, floats) == can_be_decoded,
                  "floats are decoded when bytes are");
    if (can_be_decoded) {
        rgba.pop_back();
        fuzz::require(!blocks::decode_image_rgba8(format, coded, width, height, rgba), "a short target is refused");
    }
    return 0;
}
