// How fast sources find their places in atlas pages: the packer that ships, with and without the rest of the builder,
// and the plain rule that it must agree with. Sizes are made up by code and are the same in every run; loading is no
// part of it.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "atlas/atlas_builder.hpp"
#include "tests/atlas/plain_packer.hpp"

namespace {

constexpr PAGE_EXTENTS page = {2048, 2048};

/// Powers of two from 16 to 256 a side, of one byte a texel.
std::vector<std::unique_ptr<ATLAS_SOURCE_TEXTURE>> make_sources(std::int64_t count) {
    std::mt19937 random(7);
    std::vector<std::unique_ptr<ATLAS_SOURCE_TEXTURE>> sources;
    for (std::int64_t i = 0; i < count; ++i) {
        std::uint32_t const width = 16U << random() % 5;
        std::uint32_t const height = 16U << random() % 5;
        sources.push_back(
            std::make_unique<ATLAS_SOURCE_TEXTURE>(std::string(), PIXEL_BUFFER(D3D_FORMAT::l8, width, height, 1)));
    }
    return sources;
}

ATLAS_OPTIONS options() {
    return ATLAS_OPTIONS(
        {"", "-width", std::to_string(page.width), "-height", std::to_string(page.height), "-o", "p", "x"});
}

void pack(benchmark::State& state) {
    auto const sources = make_sources(state.range(0));
    ATLAS_OPTIONS const settings = options();
    for (auto _ : state) {
        auto const groups = group_by_format(sources);
        ATLAS_BUILDER builder(settings);
        builder.build_pages(groups.begin()->second);
        state.counters["pages"] = static_cast<double>(builder.groups()[0].size());
    }
}

void pack_and_copy(benchmark::State& state) {
    ATLAS_OPTIONS const settings = options();
    for (auto _ : state) {
        state.PauseTiming();
        auto const sources = make_sources(state.range(0));
        state.ResumeTiming();
        auto const groups = group_by_format(sources);
        ATLAS_BUILDER builder(settings);
        builder.build_pages(groups.begin()->second);
        builder.finalize_all();
    }
}

void pack_plain(benchmark::State& state) {
    auto const sources = make_sources(state.range(0));
    std::vector<PAGE_EXTENTS> sizes;
    for (ATLAS_SOURCE_TEXTURE const* const source : group_by_format(sources).begin()->second)
        sizes.push_back({source->width(), source->height()});
    for (auto _ : state) {
        std::vector<PLAIN_PACKER> pages;
        benchmark::DoNotOptimize(pack_plainly(sizes, page, pages));
        state.counters["pages"] = static_cast<double>(pages.size());
    }
}

BENCHMARK(pack)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(pack_and_copy)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
// Ten thousand take the plain rule many seconds: once is enough.
BENCHMARK(pack_plain)->Arg(1000)->Arg(10000)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
