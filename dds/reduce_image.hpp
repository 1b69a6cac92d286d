// Makes a loaded image smaller before it is converted: top mip levels are thrown away as often as a rule asks, and
// further until both sides fit a limit.
#pragma once

#include "dds/output_line_sink.hpp"
#include "platform/image_loader/image.hpp"

#include <cstdint>

/// Replaces `image` by a smaller one until `drop_mips` reductions are done and both sides are at most `max_size` (at
/// least 1). An image with mip levels loses its top level; one without is halved, but never when a side is below 8,
/// whatever the rule asks. False after the line "Failed drop mip!". Throws std::bad_alloc.
bool reduce_image(OUTPUT_LINE_SINK& sink, IMAGE_LOADER::IMAGE& image, std::int32_t drop_mips, std::uint32_t max_size,
                  bool need_gamma_correction, float gamma);
