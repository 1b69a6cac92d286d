// An image brought to larger sides, as sources are before they go into a page.
#pragma once

#include "atlas/pixel_buffer.hpp"

/// The top level of `source` (four 8-bit channels) at sides that are not smaller than its own; the result has one
/// level. A triangle filter: each new texel lies between at most 2 × 2 of the old ones and is weighed by its distance
/// from their centres; at the border the outermost ones hold on. Exact in whole numbers and rounded once, so texels of
/// an axis that keeps its length stay as they are. Colours are not weighed by alpha. Throws std::bad_alloc.
PIXEL_BUFFER enlarge(PIXEL_BUFFER const& source, std::uint32_t width, std::uint32_t height);
