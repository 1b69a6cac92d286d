// Working images as tests write them down, and a sink that keeps what it is told.
#pragma once

#include "dds/output_line_sink.hpp"
#include "platform/image_loader/image.hpp"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

class TEST_SINK final : public OUTPUT_LINE_SINK {
public:
    void add_output_line(QString line) override { lines.append(line); }
    QStringList lines;
};

using TEXEL = std::array<std::uint8_t, 4>;  ///< blue, green, red, alpha

/// A single level whose texels are given by a function of x and y.
template <typename FUNCTION>
IMAGE_LOADER::IMAGE make_image(std::uint32_t width, std::uint32_t height, FUNCTION texel, std::uint32_t levels = 1) {
    IMAGE_LOADER::IMAGE image(width, height, levels, IMAGE_LOADER::TTF_B8G8R8A8);
    for (std::uint32_t level = 0; level < levels; ++level) {
        std::uint8_t* out = image.level(level).data();
        for (std::uint32_t y = 0; y < image.level_height(level); ++y) {
            for (std::uint32_t x = 0; x < image.level_width(level); ++x, out += 4) {
                TEXEL const value = texel(x, y, level);
                std::copy(value.begin(), value.end(), out);
            }
        }
    }
    return image;
}

inline TEXEL texel_at(IMAGE_LOADER::IMAGE const& image, std::uint32_t x, std::uint32_t y, std::uint32_t level = 0) {
    auto const bytes = image.level(level).subspan(4 * (std::size_t{y} * image.level_width(level) + x), 4);
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}
