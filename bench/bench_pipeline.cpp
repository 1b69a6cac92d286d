// Speed of everything in a conversion that is not block compression, on one image of 1024 × 1024 texels, each with the
// bytes of that image a second: copying the same bytes is what memory can do, and what the others are held against.
#include <benchmark/benchmark.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "dds/channel_steps.hpp"
#include "dds/compression_format.hpp"
#include "dds/gamma_curve.hpp"
#include "dds/halve_image.hpp"
#include "dds/working_image.hpp"
#include "platform/image_loader/convert.hpp"
#include "platform/image_loader/load_with_freeimage.hpp"
#include "platform/qe/load_tga.hpp"
#include "platform/tool_data_builder/mip_chain.hpp"

namespace {

using IMAGE_LOADER::IMAGE;

constexpr std::uint32_t side = 1024;
constexpr std::size_t image_bytes = std::size_t{4} * side * side;

/// Slopes with some grain in all four channels.
IMAGE made_image(IMAGE_LOADER::TEXTURE_TEXEL_FORMAT format) {
    IMAGE image = make_working_image(side, side, 1, format);
    std::mt19937 random(7);
    std::span<std::uint8_t> const texels = image.level(0);
    for (std::size_t i = 0; i < texels.size(); ++i)
        texels[i] = static_cast<std::uint8_t>(i / 4 % side / 5 + i / (4 * side) / 9 * (i % 4) + random() % 16);
    return image;
}

void count_bytes(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(image_bytes));
}

void copy_bytes(benchmark::State& state) {
    IMAGE const image = made_image(IMAGE_LOADER::TTF_B8G8R8A8);
    std::vector<std::uint8_t> copy(image_bytes);
    for (auto _ : state) {
        std::memcpy(copy.data(), image.level(0).data(), image_bytes);
        benchmark::ClobberMemory();
    }
    count_bytes(state);
}

/// Reading the file that another case reads, as bytes.
void read_bytes(benchmark::State& state, std::filesystem::path const& path) {
    std::vector<char> bytes(std::filesystem::file_size(path));
    for (auto _ : state) {
        std::ifstream file(path, std::ios::binary);
        file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        benchmark::ClobberMemory();
    }
    count_bytes(state);
}

void load_tga(benchmark::State& state, std::filesystem::path const& path) {
    std::string cause;
    for (auto _ : state)
        benchmark::DoNotOptimize(QE::load_tga(QE::String(path.string()), cause));
    count_bytes(state);
}

void convert_order(benchmark::State& state, IMAGE_LOADER::TEXTURE_TEXEL_FORMAT from,
                   IMAGE_LOADER::TEXTURE_TEXEL_FORMAT to) {
    IMAGE const source = made_image(from);
    IMAGE target = make_working_image(side, side, 1, to);
    std::string cause;
    for (auto _ : state)
        benchmark::DoNotOptimize(IMAGE_LOADER::convert(source, 0, target, 0, cause));
    count_bytes(state);
}

void working_copy(benchmark::State& state) {
    IMAGE const source = made_image(IMAGE_LOADER::TTF_B8G8R8A8);
    std::string cause;
    for (auto _ : state) {
        IMAGE target = make_working_image(side, side, 1, IMAGE_LOADER::TTF_B8G8R8A8);
        benchmark::DoNotOptimize(IMAGE_LOADER::convert(source, 0, target, 0, cause));
    }
    count_bytes(state);
}

void premultiply(benchmark::State& state, bool gamma) {
    IMAGE image = made_image(IMAGE_LOADER::TTF_B8G8R8A8);
    for (auto _ : state) {
        premultiply_alpha(image, gamma);
        benchmark::ClobberMemory();
    }
    count_bytes(state);
}

void opaque(benchmark::State& state) {
    IMAGE image = made_image(IMAGE_LOADER::TTF_B8G8R8A8);
    for (std::size_t i = 3; i < image_bytes; i += 4)
        image.level(0)[i] = 255;
    for (auto _ : state)
        benchmark::DoNotOptimize(is_fully_opaque(QStringLiteral("dxt1_or_dxt5"), image));
    count_bytes(state);
}

void halve(benchmark::State& state, GAMMA_CURVE const* curve) {
    IMAGE const image = made_image(IMAGE_LOADER::TTF_B8G8R8A8);
    for (auto _ : state)
        benchmark::DoNotOptimize(halve_image(image, curve));
    count_bytes(state);
}

void lower_mips(benchmark::State& state, TOOLDATABUILDER::MIP_FILTER filter, std::uint32_t image_side) {
    IMAGE const image = made_image(IMAGE_LOADER::TTF_B8G8R8A8);
    for (auto _ : state)
        benchmark::DoNotOptimize(TOOLDATABUILDER::make_lower_mips(
            {image.level(0).data(), image_side, image_side, std::size_t{4} * side}, filter));
    count_bytes(state);
}

/// A bottom-up TGA of made texels, 24 or 32 bits.
std::filesystem::path made_tga(std::filesystem::path const& folder, std::uint8_t bits) {
    IMAGE const image = made_image(IMAGE_LOADER::TTF_B8G8R8A8);
    std::uint8_t header[18] = {};
    header[2] = 2;
    header[12] = header[14] = side % 256;
    header[13] = header[15] = side / 256;
    header[16] = bits;
    std::filesystem::path const path = folder / (std::to_string(bits) + ".tga");
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<char const*>(header), sizeof header);
    for (std::size_t i = 0; i < image_bytes; i += 4)
        file.write(reinterpret_cast<char const*>(image.level(0).data() + i), bits / 8);
    return path;
}

}  // namespace

int main(int argc, char** argv) {
    std::filesystem::path const folder = std::filesystem::temp_directory_path() / "bench_pipeline";
    std::filesystem::create_directories(folder);
    using namespace IMAGE_LOADER;
    using TOOLDATABUILDER::MIP_FILTER;
    benchmark::RegisterBenchmark("copy_bytes", copy_bytes);
    for (std::uint8_t const bits : {std::uint8_t{24}, std::uint8_t{32}}) {
        std::filesystem::path const path = made_tga(folder, bits);
        benchmark::RegisterBenchmark(("read_bytes/" + path.filename().string()).c_str(), read_bytes, path);
        benchmark::RegisterBenchmark(("load_tga/" + path.filename().string()).c_str(), load_tga, path);
    }
    benchmark::RegisterBenchmark("convert/same_order", convert_order, TTF_B8G8R8A8, TTF_B8G8R8A8);
    benchmark::RegisterBenchmark("convert/other_order", convert_order, TTF_R8G8B8A8, TTF_B8G8R8A8);
    benchmark::RegisterBenchmark("working_copy", working_copy);
    benchmark::RegisterBenchmark("is_fully_opaque", opaque);
    benchmark::RegisterBenchmark("premultiply/plain", premultiply, false);
    benchmark::RegisterBenchmark("premultiply/gamma", premultiply, true);
    benchmark::RegisterBenchmark("halve/plain", halve, static_cast<GAMMA_CURVE const*>(nullptr));
    benchmark::RegisterBenchmark("halve/gamma", halve, &GAMMA_CURVE::standard());
    benchmark::RegisterBenchmark("lower_mips/plain", lower_mips, MIP_FILTER::box, side);
    benchmark::RegisterBenchmark("lower_mips/srgb", lower_mips, MIP_FILTER::box_srgb, side);
    benchmark::RegisterBenchmark("lower_mips/odd_sides", lower_mips, MIP_FILTER::box, side - 1);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    std::filesystem::remove_all(folder);
    return 0;
}
