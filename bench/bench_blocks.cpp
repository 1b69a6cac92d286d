// Speed of the encoders, per format, effort and number of threads, and of the decoders, on texels made up by code: the
// numbers follow changes of the code on one machine. compare_encoders has real textures and the quality besides.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "bench/format_names.hpp"
#include "blocks/decode.hpp"
#include "blocks/encode.hpp"

namespace {

constexpr std::uint32_t side = 256;

/// Slopes and ridges of one hue with some grain, so that no search has it easy and none is hopeless.
std::vector<std::uint8_t> const& texels() {
    static std::vector<std::uint8_t> const made = [] {
        std::vector<std::uint8_t> out(std::size_t{side} * side * 4);
        std::mt19937 random(5);
        for (std::uint32_t i = 0; i < side * side; ++i) {
            int const ridge = std::abs(static_cast<int>((i % side * 5 + i / side * 2) % 61) - 30) * 3;
            for (std::uint32_t c = 0; c < 4; ++c) {
                int const value = ridge + static_cast<int>(i / side / (c + 1) + random() % 16);
                out[std::size_t{i} * 4 + c] = static_cast<std::uint8_t>(std::min(value, 255));
            }
        }
        return out;
    }();
    return made;
}

void count_texels(benchmark::State& state) {
    auto const total = static_cast<double>(state.iterations()) * side * side / 1e6;
    state.counters["Mpixel/s"] = benchmark::Counter(total, benchmark::Counter::kIsRate);
}

void encode(benchmark::State& state, blocks::FORMAT format, blocks::EFFORT effort, int threads) {
    blocks::RGBA8_VIEW const view = {texels().data(), side, side, side * 4};
    blocks::ENCODE_OPTIONS options;
    options.effort = effort;
    std::vector<std::uint8_t> out(blocks::encoded_bytes(format, side, side).value());
    for (auto _ : state) {
        blocks::encode_image(format, view, options, threads, out);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    count_texels(state);
}

void decode(benchmark::State& state, blocks::FORMAT format) {
    blocks::RGBA8_VIEW const view = {texels().data(), side, side, side * 4};
    std::vector<std::uint8_t> coded(blocks::encoded_bytes(format, side, side).value());
    blocks::encode_image(format, view, {.effort = blocks::EFFORT::fast}, 1, coded);
    std::vector<std::uint8_t> out(texels().size());
    for (auto _ : state) {
        blocks::decode_image_rgba8(format, coded, side, side, out);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    count_texels(state);
}

}  // namespace

int main(int argc, char** argv) {
    constexpr std::pair<char const*, blocks::EFFORT> efforts[] = {
        {"fast", blocks::EFFORT::fast}, {"normal", blocks::EFFORT::normal}, {"best", blocks::EFFORT::best}};
    for (std::string const name : {"bc1", "bc2", "bc3", "bc4", "bc4_snorm", "bc5", "bc5_snorm", "bc6h", "bc7"}) {
        blocks::FORMAT const format = format_named(name).value();
        for (auto const& [effort_name, effort] : efforts) {
            for (int const threads : {1, 2}) {
                auto const full = "encode/" + name + "/" + effort_name + "/" + std::to_string(threads);
                benchmark::RegisterBenchmark(full.c_str(), encode, format, effort, threads)->UseRealTime();
            }
        }
        benchmark::RegisterBenchmark(("decode/" + name).c_str(), decode, format);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
