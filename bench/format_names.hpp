// The formats' names on command lines of this folder. "bc1a" is BC1 with one-bit alpha: texels below an alpha of 128
// are to be transparent.
#pragma once

#include <optional>
#include <string_view>

#include "blocks/block_types.hpp"

inline std::optional<blocks::FORMAT> format_named(std::string_view name) {
    using enum blocks::FORMAT;
    struct NAMED {
        std::string_view name;
        blocks::FORMAT format;
    };
    constexpr NAMED formats[] = {{"bc1", bc1},        {"bc1a", bc1},
                                 {"bc2", bc2},        {"bc3", bc3},
                                 {"bc4", bc4_unorm},  {"bc4_snorm", bc4_snorm},
                                 {"bc5", bc5_unorm},  {"bc5_snorm", bc5_snorm},
                                 {"bc6h", bc6h_uf16}, {"bc7", bc7}};
    for (NAMED const& named : formats) {
        if (named.name == name) {
            return named.format;
        }
    }
    return std::nullopt;
}
