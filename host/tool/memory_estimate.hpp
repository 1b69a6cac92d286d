// How large sources are, and how much memory an action is going to need for them, guessed before it runs. Only sizes
// are read here, by hand: a decoder that a broken file could crash has no business in the process that must survive.
#pragma once

#include "host/tool/planner.hpp"

#include <cstdint>
#include <optional>

namespace tool {

struct IMAGE_SIDES {
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    std::uint64_t depth = 1;
};

/// Of the file's largest image, as its header announces them; nothing for files that are no images (TGA, PNG, JPG, TIF,
/// DDS) or that break off.
std::optional<IMAGE_SIDES> announced_sides(QString const& path);
/// The product of these sides.
std::optional<std::uint64_t> announced_texels(QString const& path);

/// Bytes, on the safe side.
std::uint64_t estimate_memory(PLANNED_ACTION const& planned);

}  // namespace tool
