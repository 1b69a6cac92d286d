// Tells a sound build of NVIDIA Texture Tools from a miscompiled one. Its cluster fit reads one element past an array,
// and an optimiser that takes this for impossible breaks every block fit above the fastest quality: the "highest"
// quality then loses several decibels and depends on addresses, which change with each process. So: compress an image
// at both qualities and fail when the highest is the worse one. Prints numbers and checksums; Findnvtt.cmake runs it
// twice and wants the same. The BC1 colour layout is that of Khronos' data format description, section "S3TC compressed
// texture image formats".
#include <nvtt/nvtt.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace {

constexpr int side = 64;

struct TEXEL {
    std::uint8_t blue, green, red, alpha;
};

using IMAGE = std::vector<TEXEL>;

/// What a photograph-like texture holds: slopes, an edge and noise. Only `cut_out` gives it holes (alpha 0).
IMAGE test_image(bool cut_out) {
    std::uint32_t state = 12345;
    auto const noise = [&state] {
        state = state * 1664525u + 1013904223u;
        return static_cast<int>(state >> 24) % 48 - 24;
    };
    auto const byte = [](int value) {
        return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
    };
    IMAGE image;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            int const ridge = x + y / 2 > side ? 60 : 0;
            int const light = noise();
            bool const hole = cut_out && (x - 20) * (x - 20) + (y - 36) * (y - 36) < 150;
            image.push_back({byte(40 + y * 2 + light), byte(30 + x + y + ridge + light + noise() / 2),
                             byte(200 - x * 2 + ridge + light), byte(hole ? 0 : 255)});
        }
    }
    return image;
}

struct COLLECTOR : nvtt::OutputHandler {
    std::vector<std::uint8_t> bytes;
    void beginImage(int, int, int, int, int, int) override {}
    bool writeData(void const* data, int size) override {
        auto const* first = static_cast<std::uint8_t const*>(data);
        bytes.insert(bytes.end(), first, first + size);
        return true;
    }
};

/// Blocks without a header, row by row.
std::vector<std::uint8_t> compress(IMAGE const& image, nvtt::Format format, nvtt::Quality quality) {
    nvtt::InputOptions input;
    input.setTextureLayout(nvtt::TextureType_2D, side, side);
    input.setMipmapData(image.data(), side, side);
    input.setMipmapGeneration(false);
    nvtt::CompressionOptions compression;
    compression.setFormat(format);
    compression.setQuality(quality);
    if (format == nvtt::Format_DXT1a) {
        compression.setQuantization(false, false, true, 127);
    }
    COLLECTOR collector;
    nvtt::OutputOptions output;
    output.setOutputHeader(false);
    output.setOutputHandler(&collector);
    nvtt::Compressor compressor;
    compressor.enableCudaAcceleration(false);
    return compressor.process(input, compression, output) ? collector.bytes : std::vector<std::uint8_t>{};
}

/// FNV-1a, 32 bits.
std::uint32_t checksum(std::vector<std::uint8_t> const& bytes) {
    std::uint32_t sum = 2166136261u;
    for (std::uint8_t const byte : bytes) {
        sum = (sum ^ byte) * 16777619u;
    }
    return sum;
}

using COLOUR = std::array<int, 3>;

COLOUR expand_565(unsigned packed) {
    int const red = packed >> 11 & 31, green = packed >> 5 & 63, blue = packed & 31;
    return {red << 3 | red >> 2, green << 2 | green >> 4, blue << 3 | blue >> 2};
}

/// The colours that the eight bytes of a colour block choose from.
std::array<COLOUR, 4> palette(std::uint8_t const* block, bool three_colours_allowed) {
    unsigned const first = block[0] | block[1] << 8, second = block[2] | block[3] << 8;
    std::array<COLOUR, 4> colours{expand_565(first), expand_565(second), COLOUR{}, COLOUR{}};
    for (std::size_t c = 0; c < 3; ++c) {
        int const a = colours[0][c], b = colours[1][c];
        if (three_colours_allowed && first <= second) {
            colours[2][c] = (a + b) / 2;
        } else {
            colours[2][c] = (2 * a + b) / 3;
            colours[3][c] = (a + 2 * b) / 3;
        }
    }
    return colours;
}

/// PSNR of the colour of all texels that are not holes, in decibels; 0 for a payload of the wrong size.
double colour_psnr(IMAGE const& image, std::vector<std::uint8_t> const& blocks, bool has_alpha_block) {
    std::size_t const block_size = has_alpha_block ? 16 : 8;
    if (blocks.size() != block_size * (side / 4) * (side / 4)) {
        return 0;
    }
    double sum = 0;
    int count = 0;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            TEXEL const texel = image[static_cast<std::size_t>(y * side + x)];
            if (texel.alpha == 0) {
                continue;
            }
            auto const number = static_cast<std::size_t>(y / 4 * (side / 4) + x / 4);
            std::uint8_t const* block = blocks.data() + number * block_size + (has_alpha_block ? 8 : 0);
            unsigned const index = block[4 + y % 4] >> (x % 4 * 2) & 3;
            COLOUR const colour = palette(block, !has_alpha_block)[index];
            COLOUR const source{texel.red, texel.green, texel.blue};
            for (std::size_t c = 0; c < 3; ++c) {
                sum += (colour[c] - source[c]) * (colour[c] - source[c]);
                ++count;
            }
        }
    }
    return 10 * std::log10(255.0 * 255.0 * count / std::max(sum, 1.0));
}

}  // namespace

int main() {
    struct {
        char const* name;
        nvtt::Format format;
        bool has_alpha_block;
    } const formats[] = {{"DXT1", nvtt::Format_DXT1, false},
                         {"DXT1a", nvtt::Format_DXT1a, false},
                         {"DXT3", nvtt::Format_DXT3, true},
                         {"DXT5", nvtt::Format_DXT5, true}};
    bool sound = true;
    for (auto const& [name, format, has_alpha_block] : formats) {
        IMAGE const image = test_image(format == nvtt::Format_DXT1a);
        auto const fast = compress(image, format, nvtt::Quality_Fastest);
        auto const high = compress(image, format, nvtt::Quality_Highest);
        double const fastest = colour_psnr(image, fast, has_alpha_block);
        double const highest = colour_psnr(image, high, has_alpha_block);
        bool const good = fastest > 0 && highest >= fastest;
        std::printf("%-5s fastest %.2f dB, highest %.2f dB (%08x)%s\n", name, fastest, highest,
                    static_cast<unsigned>(checksum(high)), good ? "" : ": unsound");
        sound = sound && good;
    }
    return sound ? 0 : 1;
}
