// How much memory an action is going to need, guessed before it runs from the first bytes of its sources. Only sizes
// are read here, by hand: a decoder that a broken file could crash has no business in the process that must survive.
#pragma once

#include "host/tool/planner.hpp"

#include <cstdint>
#include <optional>

namespace tool {

/// Texels of the file's largest image, as its header announces them; nothing for files that are no images (TGA, PNG,
/// JPG, TIF, DDS) or that break off.
std::optional<std::uint64_t> announced_texels(QString const& path);

/// Bytes, on the safe side.
std::uint64_t estimate_memory(PLANNED_ACTION const& planned);

}  // namespace tool
