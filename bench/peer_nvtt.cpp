// NVIDIA Texture Tools 2. Some builds of it are unsound above the fastest quality; its scores then say so.
#include <nvtt/nvtt.h>

#include <cstring>

#include "bench/crop_side.hpp"
#include "bench/peer.hpp"

namespace {

struct MEMORY_OUTPUT : nvtt::OutputHandler {
    std::uint8_t* next;

    explicit MEMORY_OUTPUT(std::uint8_t* out) : next(out) {}
    void beginImage(int, int, int, int, int, int) override {}
    bool writeData(void const* data, int size) override {
        std::memcpy(next, data, static_cast<std::size_t>(size));
        next += size;
        return true;
    }
};

void encode(nvtt::Format format, nvtt::Quality quality, std::uint8_t const* rgba, std::uint8_t* out) {
    std::vector<std::uint8_t> bgra(rgba, rgba + crop_bytes);
    for (std::size_t i = 0; i < crop_bytes; i += 4) {
        std::swap(bgra[i], bgra[i + 2]);
        if (format == nvtt::Format_BC4) {
            // It compresses alpha.
            bgra[i + 3] = rgba[i];
        }
    }
    nvtt::InputOptions input;
    input.setTextureLayout(nvtt::TextureType_2D, crop_side, crop_side);
    input.setMipmapData(bgra.data(), crop_side, crop_side);
    input.setMipmapGeneration(false);
    nvtt::CompressionOptions compression;
    compression.setFormat(format);
    compression.setQuality(quality);
    MEMORY_OUTPUT memory(out);
    nvtt::OutputOptions output;
    output.setOutputHandler(&memory);
    output.setOutputHeader(false);
    nvtt::Compressor compressor;
    compressor.enableCudaAcceleration(false);
    compressor.process(input, compression, output);
}

}  // namespace

int main(int argc, char** argv) {
    constexpr std::pair<char const*, nvtt::Format> formats[] = {
        {"bc1", nvtt::Format_DXT1}, {"bc3", nvtt::Format_DXT5}, {"bc4", nvtt::Format_BC4}, {"bc5", nvtt::Format_BC5}};
    constexpr std::pair<char const*, nvtt::Quality> qualities[] = {
        {"fastest", nvtt::Quality_Fastest}, {"normal", nvtt::Quality_Normal}, {"highest", nvtt::Quality_Highest}};
    std::vector<PEER_ENCODER> encoders;
    for (auto const& [format_name, format] : formats) {
        for (auto const& [quality_name, quality] : qualities) {
            encoders.push_back({format_name, quality_name, [=](std::uint8_t const* rgba, std::uint8_t* out) {
                                    encode(format, quality, rgba, out);
                                }});
        }
    }
    return run_peer(argc, argv, encoders);
}
