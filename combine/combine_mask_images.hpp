// Single channels of three or four TGA files as one image. Each file gives the channel that it becomes: the first red,
// the second green, the third blue.
#pragma once

#include "dds/output_line_sink.hpp"
#include "platform/qe/image32.hpp"
#include "processor/host/physical_path.hpp"

#include <optional>

/// Where one source is asked for several times it is read once. An empty path, and a file that cannot be opened or
/// read, is an absent source: its channel is 0 where it is not required. Alpha is the byte 1, which is meant: readers
/// of these maps take no alpha from them. Nothing, after one line that says why, when a required source is absent or
/// the sources have not all one size. Throws std::bad_alloc.
std::optional<QE::IMAGE32> combine_mask_images_3(OUTPUT_LINE_SINK& sink, PHYSICAL_PATH const& path_1,
                                                 PHYSICAL_PATH const& path_2, PHYSICAL_PATH const& path_3,
                                                 bool required_1, bool required_2, bool required_3);

/// The same with a fourth source for alpha, whose red is taken with `alpha_from_red`, else its alpha; alpha is 255 when
/// it is absent. No source is required, but one must be there.
std::optional<QE::IMAGE32> combine_mask_images_4(OUTPUT_LINE_SINK& sink, PHYSICAL_PATH const& path_1,
                                                 PHYSICAL_PATH const& path_2, PHYSICAL_PATH const& path_3,
                                                 PHYSICAL_PATH const& path_4, bool alpha_from_red);
