#include "dds/one_bit_alpha_chain.hpp"

#include "dds/gamma_curve.hpp"
#include "dds/working_image.hpp"
#include "platform/checked_size.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace {

using IMAGE_LOADER::IMAGE;

constexpr std::uint8_t opaque_threshold = 128;

/// The generator that decides between texels of equal rank: the same choice in every run and on every machine.
class TIE_BREAKER {
public:
    std::uint32_t next() {
        state_ = state_ * 214013U + 2531011U;
        return state_ >> 16;
    }

private:
    std::uint32_t state_ = 397926U;
};

std::uint8_t rounded_byte(double value) {
    return static_cast<std::uint8_t>(std::min(std::floor(value + 0.5), 255.0));
}

std::size_t count_opaque(std::span<std::uint8_t const> texels) {
    std::size_t count = 0;
    for (std::size_t alpha = 3; alpha < texels.size(); alpha += 4)
        count += texels[alpha] >= opaque_threshold;
    return count;
}

/// The top-level columns (or rows) that one of a level covers. Levels of sides that do not divide share them out
/// evenly.
struct RANGE {
    std::size_t first;
    std::size_t last;
};

RANGE covered(std::size_t index, std::size_t level_side, std::size_t top_side) {
    return {index * top_side / level_side, (index + 1) * top_side / level_side};
}

void average_block(IMAGE const& top, RANGE columns, RANGE rows, GAMMA_CURVE const* curve, std::uint8_t* out) {
    std::span<std::uint8_t const> const texels = top.level(0);
    std::array<double, 3> sums{};
    std::size_t opaque = 0;
    for (std::size_t y = rows.first; y < rows.last; ++y) {
        for (std::size_t x = columns.first; x < columns.last; ++x) {
            std::uint8_t const* const texel = texels.data() + 4 * (y * top.width() + x);
            for (std::size_t channel = 0; channel < 3; ++channel)
                sums[channel] += curve != nullptr ? double{curve->to_linear(texel[channel])} : double(texel[channel]);
            opaque += texel[3] >= opaque_threshold;
        }
    }
    auto const count = static_cast<double>((columns.last - columns.first) * (rows.last - rows.first));
    for (std::size_t channel = 0; channel < 3; ++channel) {
        double const mean = sums[channel] / count;
        out[channel] = curve != nullptr ? curve->to_byte(static_cast<float>(mean)) : rounded_byte(mean);
    }
    out[3] = rounded_byte(255.0 * static_cast<double>(opaque) / count);
}

/// Gives alpha 255 to the `wanted` texels of highest alpha, and 0 to the others.
void keep_most_opaque(std::span<std::uint8_t> texels, std::size_t wanted, TIE_BREAKER& ties) {
    std::array<std::size_t, 256> counts{};
    for (std::size_t alpha = 3; alpha < texels.size(); alpha += 4)
        ++counts[texels[alpha]];
    // Above the cut all are taken, below it none; of those at it, as many as are still wanted.
    int cut = 255;
    while (cut > 0 && counts[static_cast<std::size_t>(cut)] <= wanted) {
        wanted -= counts[static_cast<std::size_t>(cut)];
        --cut;
    }
    std::vector<std::size_t> at_cut;
    for (std::size_t alpha = 3; alpha < texels.size(); alpha += 4) {
        if (texels[alpha] == cut)
            at_cut.push_back(alpha);
        texels[alpha] = texels[alpha] > cut ? 255 : 0;
    }
    wanted = std::min(wanted, at_cut.size());
    for (std::size_t i = 0; i < wanted; ++i) {
        std::swap(at_cut[i], at_cut[i + ties.next() % (at_cut.size() - i)]);
        texels[at_cut[i]] = 255;
    }
}

}  // namespace

std::vector<IMAGE> make_one_bit_alpha_chain(IMAGE const& top, bool need_gamma_correction) {
    GAMMA_CURVE const* const curve = need_gamma_correction ? &GAMMA_CURVE::standard() : nullptr;
    std::size_t const top_texels = checked_size::memory_size(top.width(), top.height());
    double const coverage = static_cast<double>(count_opaque(top.level(0))) / static_cast<double>(top_texels);
    TIE_BREAKER ties;
    std::vector<IMAGE> chain;
    for (std::uint32_t width = top.width(), height = top.height(); width > 1 || height > 1;) {
        width = std::max(width / 2, 1U);
        height = std::max(height / 2, 1U);
        IMAGE& level = chain.emplace_back(make_working_image(width, height, 1, top.texel_format()));
        std::span<std::uint8_t> const texels = level.level(0);
        for (std::size_t y = 0; y < height; ++y) {
            for (std::size_t x = 0; x < width; ++x)
                average_block(top, covered(x, width, top.width()), covered(y, height, top.height()), curve,
                              texels.data() + 4 * (y * width + x));
        }
        double const count = std::floor(coverage * static_cast<double>(checked_size::memory_size(width, height)) + 0.5);
        keep_most_opaque(texels, static_cast<std::size_t>(count), ties);
    }
    return chain;
}
