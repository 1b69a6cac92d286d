// The images that the encoders' quality is watched on: small ones, made by code, each like one kind of texture that
// games have. Only whole numbers and a fixed generator make them, so they are the same on every machine.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "encoder_checks.hpp"

namespace checks {

inline constexpr std::uint32_t quality_side = 64;

/// Noise of several sizes, 0 … 255; a different one for every `seed`.
class VALUE_NOISE {
public:
    explicit VALUE_NOISE(std::uint32_t seed) {
        std::mt19937 random(seed);
        for (auto& value : lattice_)
            value = static_cast<int>(random() % 256);
    }

    int at(std::uint32_t x, std::uint32_t y) const {
        int sum = 0;
        for (std::uint32_t size = 32, share = 8; size >= 2; size /= 2, share = std::max(share / 2, 1u))
            sum += smooth(x, y, size) * static_cast<int>(share);
        return sum / 16;
    }

private:
    int corner(std::uint32_t x, std::uint32_t y, std::uint32_t size) const {
        return lattice_[(y * 37 + x * 5 + size * 131) % lattice_.size()];
    }
    int smooth(std::uint32_t x, std::uint32_t y, std::uint32_t size) const {
        std::uint32_t const i = x / size, j = y / size;
        int const n = static_cast<int>(size), fx = static_cast<int>(x % size), fy = static_cast<int>(y % size);
        int const top = corner(i, j, size) * (n - fx) + corner(i + 1, j, size) * fx;
        int const bottom = corner(i, j + 1, size) * (n - fx) + corner(i + 1, j + 1, size) * fx;
        return (top * (n - fy) + bottom * fy) / (n * n);
    }

    std::array<int, 1021> lattice_{};
};

/// Calls `colour(x, y)`, which gives four numbers, for every texel; they are brought into 0 … 255.
template <class COLOUR>
BYTES painted(COLOUR&& colour) {
    BYTES image(quality_side, quality_side);
    for (std::uint32_t y = 0; y < quality_side; ++y)
        for (std::uint32_t x = 0; x < quality_side; ++x) {
            std::array<int, 4> const rgba = colour(x, y);
            for (std::size_t c = 0; c < 4; ++c)
                image.at(x, y)[c] = static_cast<std::uint8_t>(std::clamp(rgba[c], 0, 255));
        }
    return image;
}

/// A sky: nothing but slopes.
inline BYTES sky_image() {
    return painted([](std::uint32_t x, std::uint32_t y) {
        int const i = static_cast<int>(x), j = static_cast<int>(y);
        return std::array{60 + i / 2 + j / 3, 110 + j, 235 - j / 2 - i / 5, 255};
    });
}

/// Stone: one hue, much structure, and moss that is of another hue.
inline BYTES stone_image() {
    VALUE_NOISE const grey(1), moss(2), grain(3);
    return painted([&](std::uint32_t x, std::uint32_t y) {
        int const light = grey.at(x, y) + (grain.at(x * 7, y * 5) - 128) / 6;
        int const green = std::max(moss.at(x, y) - 140, 0);
        return std::array{light - green, light * 15 / 16 + green / 4, light * 13 / 16 - green, 255};
    });
}

/// Lettering: strokes of few colours with hard edges on a plain ground.
inline BYTES lettering_image() {
    return painted([](std::uint32_t x, std::uint32_t y) {
        bool const stroke = (x / 3 + y / 5) % 5 == 0 || (x + 2 * y) % 29 < 3;
        bool const shade = !stroke && ((x + 1) / 3 + (y + 1) / 5) % 5 == 0;
        return stroke  ? std::array{230, 200, 40, 255}
               : shade ? std::array{70, 20, 60, 255}
                       : std::array{20, 90, 220, 255};
    });
}

/// A map of normals over bumpy ground.
inline BYTES normals_image() {
    VALUE_NOISE const height(4);
    return painted([&](std::uint32_t x, std::uint32_t y) {
        int const dx = (height.at(x + 1, y) - height.at(x, y)) * 6;
        int const dy = (height.at(x, y + 1) - height.at(x, y)) * 6;
        int const length = static_cast<int>(std::lround(std::sqrt(double(dx * dx + dy * dy + 100 * 100))));
        return std::array{128 + dx * 127 / length, 128 + dy * 127 / length, 128 + 100 * 127 / length, 255};
    });
}

/// Leaves: holes with soft edges in the alpha, and colours that go on under them.
inline BYTES leaves_image() {
    VALUE_NOISE const shape(5), shade(6);
    return painted([&](std::uint32_t x, std::uint32_t y) {
        int const light = shade.at(x, y);
        return std::array{20 + light / 3, 40 + light * 2 / 3, 10 + light / 5, (shape.at(x, y) - 110) * 12};
    });
}

/// Four maps that have nothing to do with each other, one a channel.
inline BYTES packed_image() {
    VALUE_NOISE const first(7), second(8), third(9), fourth(10);
    return painted([&](std::uint32_t x, std::uint32_t y) {
        return std::array{first.at(x, y), second.at(x * 2, y), third.at(x, y * 3) > 128 ? 250 : 5, fourth.at(y, x)};
    });
}

/// Light of every strength: slopes over many powers of two, and lamps.
inline HALVES lamps_image() {
    HALVES image(quality_side, quality_side);
    VALUE_NOISE const grain(11);
    for (std::uint32_t y = 0; y < quality_side; ++y)
        for (std::uint32_t x = 0; x < quality_side; ++x) {
            bool const lamp = (x % 21) * (x % 21) + (y % 17) * (y % 17) < 12;
            for (std::uint32_t c = 0; c < 3; ++c) {
                // The bit pattern of a half is nearly a logarithm.
                std::uint32_t const light =
                    9000 + x * (60 + c * 5) + y * 40 + static_cast<std::uint32_t>(grain.at(x, y)) * 2;
                image.at(x, y)[c] = static_cast<std::uint16_t>(lamp ? 21000 - c * 700 : light);
            }
            image.at(x, y)[3] = 0x3C00;
        }
    return image;
}

}  // namespace checks
