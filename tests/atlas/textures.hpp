// Sources and options as the tests of the atlas builder make them up.
#pragma once

#include "atlas/atlas_builder.hpp"

#include <functional>
#include <memory>
#include <string>
#include <vector>

using TEXTURES = std::vector<std::unique_ptr<ATLAS_SOURCE_TEXTURE>>;

/// `fill` gives the bytes of each level, by level and place; without it they are 0.
inline std::unique_ptr<ATLAS_SOURCE_TEXTURE>
texture(std::string const& name, std::uint32_t width, std::uint32_t height, D3D_FORMAT format, std::uint32_t levels = 1,
        std::function<std::uint8_t(std::uint32_t, std::size_t)> const& fill = {}) {
    PIXEL_BUFFER texels(format, width, height, levels);
    for (std::uint32_t level = 0; fill && level < levels; ++level) {
        std::span<std::uint8_t> const bytes = texels.slice(level, 0);
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = fill(level, i);
    }
    return std::make_unique<ATLAS_SOURCE_TEXTURE>(name, std::move(texels));
}

/// The list goes to the builder with its program name in front.
inline ATLAS_OPTIONS options_of(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "");
    return ATLAS_OPTIONS(std::move(arguments));
}
